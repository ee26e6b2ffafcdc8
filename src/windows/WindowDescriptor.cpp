#include "windows/WindowDescriptor.h"

#include "platform/WindowServer.h"

#include <cmath>
#include <utility>

namespace lumo {

namespace {

std::optional<Rect> rectFrom(const Dictionary &bounds) {
    Rect rect;
    for (const auto &[key, value] : bounds.entries()) {
        const auto number = value.number();
        if (!number) {
            return std::nullopt;
        }
        if (key == boundsKey::x) {
            rect.x = *number;
        } else if (key == boundsKey::y) {
            rect.y = *number;
        } else if (key == boundsKey::width) {
            rect.width = *number;
        } else if (key == boundsKey::height) {
            rect.height = *number;
        }
    }
    // A negative side reaches from the origin the other way.
    return Rect{std::fmin(rect.x, rect.x + rect.width), std::fmin(rect.y, rect.y + rect.height),
                std::fabs(rect.width), std::fabs(rect.height)};
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
