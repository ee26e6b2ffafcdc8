#pragma once

#include <QIcon>

namespace lumo {

// The program's picture, for title bars and lists of windows; the same as the one that packages
// install.
QIcon programIcon();

} // namespace lumo
