#include "windows/OrdinaryWindow.h"

#include "platform/WindowServer.h"

#include <string_view>

namespace lumo {

std::optional<std::int32_t> ownerOfOrdinaryWindow(const Dictionary &record, double smallestSide) {
    const auto *owner = record.find(windowKey::ownerPID);
    const auto *layer = record.find(windowKey::layer);
    const auto *alpha = record.find(windowKey::alpha);
    const auto *bounds = record.find(windowKey::bounds);
    const auto *sides = bounds != nullptr ? bounds->dictionary() : nullptr;
    if (owner == nullptr || sides == nullptr || (layer != nullptr && layer->integer() != 0) ||
        (alpha != nullptr && alpha->number().value_or(0) <= 0)) {
        return std::nullopt;
    }
    const auto isLargeEnough = [&](std::string_view side) {
        const auto *length = sides->find(side);
        return length != nullptr && length->number().value_or(0) >= smallestSide;
    };
    return isLargeEnough(boundsKey::width) && isLargeEnough(boundsKey::height) ? owner->integer32()
                                                                               : std::nullopt;
}

} // namespace lumo
