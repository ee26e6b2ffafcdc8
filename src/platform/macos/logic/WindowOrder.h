#pragma once

#include "platform/WindowServer.h"

#include <cstdint>
#include <optional>
#include <set>

namespace lumo::macos {

// Whether the window of this number already lies directly below the target, with nothing but
// overlays between, in the records from front to back. True as well when the target is not on
// screen: there is nothing to be ordered below then.
bool liesBelow(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
               std::uint32_t number, std::uint32_t target);

// Whether the window of this number already lies above all ordinary windows but other overlays.
bool liesInFront(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
                 std::uint32_t number);

// The lowest of that process's ordinary windows that lie above all of other processes, overlays
// aside; absent when there is none.
std::optional<std::uint32_t> lowestInFront(const WindowRecords &records,
                                           const std::set<std::uint32_t> &overlays,
                                           std::int32_t process);

} // namespace lumo::macos
