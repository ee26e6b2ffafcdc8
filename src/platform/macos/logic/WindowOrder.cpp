#include "platform/macos/logic/WindowOrder.h"

#include <algorithm>

namespace lumo::macos {

namespace {

using Position = WindowRecords::const_iterator;

// Whether the window comes next from here on, overlays and other bands aside.
bool comesNext(Position position, Position end, const std::set<std::uint32_t> &overlays,
               std::uint32_t number) {
    for (; position != end; ++position) {
        if (position->number == number) {
            return true;
        }
        const bool isOverlay = position->number && overlays.contains(*position->number);
        if (position->layer == 0 && !isOverlay) {
            return false;
        }
    }
    return false;
}

} // namespace

bool liesBelow(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
               std::uint32_t number, std::uint32_t target) {
    const auto above = std::ranges::find(records, target, &WindowRecord::number);
    return above == records.end() || comesNext(above + 1, records.end(), overlays, number);
}

bool liesInFront(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
                 std::uint32_t number) {
    return comesNext(records.begin(), records.end(), overlays, number);
}

std::optional<std::uint32_t> lowestInFront(const WindowRecords &records,
                                           const std::set<std::uint32_t> &overlays,
                                           std::int32_t process) {
    std::optional<std::uint32_t> lowest;
    for (const auto &record : records) {
        if (record.layer != 0 || !record.number || overlays.contains(*record.number)) {
            continue;
        }
        if (record.ownerProcess != process) {
            break;
        }
        lowest = record.number;
    }
    return lowest;
}

} // namespace lumo::macos
