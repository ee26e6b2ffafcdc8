#pragma once

#include "platform/Vocabulary.h"

namespace lumo::macos {

// The words of the Mac.
const Vocabulary &vocabulary();

} // namespace lumo::macos
