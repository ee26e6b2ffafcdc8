#pragma once

#include "platform/Vocabulary.h"

namespace lumo::freedesktop {

// The words of Linux desktops.
const Vocabulary &vocabulary();

} // namespace lumo::freedesktop
