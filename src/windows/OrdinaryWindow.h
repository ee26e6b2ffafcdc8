#pragma once

#include "support/Value.h"

#include <cstdint>
#include <optional>

namespace lumo {

// The process that shows the window of this record, if it is an ordinary window that can be seen:
// of layer 0 and not transparent, where the record says, with bounds whose sides are both at least
// that many points. Absent otherwise, and when the record names no process.
std::optional<std::int32_t> ownerOfOrdinaryWindow(const Dictionary &record, double smallestSide);

} // namespace lumo
