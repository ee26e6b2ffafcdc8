#pragma once

#include "platform/Vocabulary.h"

namespace lumo::test {

// Those of the desktop that this build is for.
const Vocabulary &desktopWords();

} // namespace lumo::test
