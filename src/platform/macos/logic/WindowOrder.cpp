#include "platform/macos/logic/WindowOrder.h"

#include <algorithm>
#include <optional>

namespace lumo::macos {

namespace {

std::optional<std::uint32_t> numberOf(const Dictionary &record) {
    const Value *value = record.find(windowKey::number);
    return value != nullptr ? value->unsigned32() : std::nullopt;
}

bool isOrdinary(const Dictionary &record) {
    const Value *layer = record.find(windowKey::layer);
    return layer != nullptr && layer->integer() == 0;
}

using Position = WindowRecords::const_iterator;

// Whether the window comes next from here on, overlays and other bands aside.
bool comesNext(Position position, Position end, const std::set<std::uint32_t> &overlays,
               std::uint32_t number) {
    for (; position != end; ++position) {
        const auto found = numberOf(*position);
        if (found == number) {
            return true;
        }
        if (isOrdinary(*position) && !(found && overlays.contains(*found))) {
            return false;
        }
    }
    return false;
}

} // namespace

bool liesBelow(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
               std::uint32_t number, std::uint32_t target) {
    const auto above = std::ranges::find(records, std::optional(target), numberOf);
    return above == records.end() || comesNext(above + 1, records.end(), overlays, number);
}

bool liesInFront(const WindowRecords &records, const std::set<std::uint32_t> &overlays,
                 std::uint32_t number) {
    return comesNext(records.begin(), records.end(), overlays, number);
}

} // namespace lumo::macos
