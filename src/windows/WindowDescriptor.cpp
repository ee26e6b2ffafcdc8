#include "windows/WindowDescriptor.h"

#include "platform/WindowServer.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace lumo {

namespace {

// A side by its key; one that is left out counts as 0.
double sideOf(const Dictionary &bounds, std::string_view key) {
    const Value *value = bounds.find(key);
    return value ? value->number().value_or(0) : 0;
}

std::optional<Rect> rectFrom(const Dictionary &bounds) {
    for (const auto &[key, value] : bounds.entries()) {
        if (!value.number()) {
            return std::nullopt;
        }
    }
    const double x = sideOf(bounds, boundsKey::x);
    const double y = sideOf(bounds, boundsKey::y);
    const double width = sideOf(bounds, boundsKey::width);
    const double height = sideOf(bounds, boundsKey::height);
    // A negative side reaches from the origin the other way.
    return Rect{std::min(x, x + width), std::min(y, y + height), std::fabs(width),
                std::fabs(height)};
}

} // namespace

std::optional<WindowDescriptor> WindowDescriptor::from(const Dictionary &record,
                                                       std::int64_t zOrder,
                                                       std::optional<std::string> bundleID) {
    const Value *numberValue = record.find(windowKey::number);
    const Value *ownerPIDValue = record.find(windowKey::ownerPID);
    const Value *ownerNameValue = record.find(windowKey::ownerName);
    const Value *layerValue = record.find(windowKey::layer);
    const Value *boundsValue = record.find(windowKey::bounds);
    const Value *isOnScreenValue = record.find(windowKey::isOnscreen);
    if (!numberValue || !ownerPIDValue || !ownerNameValue || !layerValue || !boundsValue ||
        !isOnScreenValue) {
        return std::nullopt;
    }
    const auto number = numberValue->unsigned32();
    const auto ownerPID = ownerPIDValue->integer32();
    const std::string *ownerName = ownerNameValue->string();
    const auto layer = layerValue->integer();
    const Dictionary *boundsRecord = boundsValue->dictionary();
    const auto isOnScreen = isOnScreenValue->boolean();
    if (!number || !ownerPID || !ownerName || !layer || !boundsRecord || !isOnScreen) {
        return std::nullopt;
    }
    const auto bounds = rectFrom(*boundsRecord);
    if (!bounds) {
        return std::nullopt;
    }
    const Value *nameValue = record.find(windowKey::name);
    const std::string *name = nameValue ? nameValue->string() : nullptr;
    return WindowDescriptor{.id = *number,
                            .windowID = *number,
                            .ownerPID = *ownerPID,
                            .ownerName = *ownerName,
                            .bundleID = std::move(bundleID),
                            .zOrder = zOrder,
                            .layer = *layer,
                            .bounds = *bounds,
                            .area = bounds->area(),
                            .isOnScreen = *isOnScreen,
                            .name = name ? std::optional(*name) : std::nullopt};
}

} // namespace lumo
