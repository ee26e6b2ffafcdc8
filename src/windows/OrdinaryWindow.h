#pragma once

#include <cstdint>
#include <optional>

namespace lumo {

struct WindowRecord;

// The process that shows the window of this record, if it is an ordinary window that can be seen:
// of layer 0, where the record names one, and not transparent, with bounds whose sides are both at
// least that many points. Absent otherwise, and when the record names no process.
std::optional<std::int32_t> ownerOfOrdinaryWindow(const WindowRecord &record, double smallestSide);

} // namespace lumo
