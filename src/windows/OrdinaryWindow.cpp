#include "windows/OrdinaryWindow.h"

#include "platform/WindowServer.h"

namespace lumo {

std::optional<std::int32_t> ownerOfOrdinaryWindow(const WindowRecord &record, double smallestSide) {
    const bool isOrdinary = record.layer.value_or(0) == 0 && record.alpha > 0 && record.bounds &&
                            record.bounds->width >= smallestSide &&
                            record.bounds->height >= smallestSide;
    return isOrdinary ? record.ownerProcess : std::nullopt;
}

} // namespace lumo
