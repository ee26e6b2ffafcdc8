#include "windows/WindowDescriptor.h"

#include "platform/WindowServer.h"

#include <utility>

namespace lumo {

std::optional<WindowDescriptor> WindowDescriptor::from(const WindowRecord &record,
                                                       std::int64_t zOrder,
                                                       std::optional<std::string> bundleID) {
    if (!record.number || !record.ownerProcess || !record.ownerName || !record.layer ||
        !record.bounds || !record.isOnScreen) {
        return std::nullopt;
    }
    return WindowDescriptor{.id = *record.number,
                            .windowID = *record.number,
                            .ownerPID = *record.ownerProcess,
                            .ownerName = *record.ownerName,
                            .bundleID = std::move(bundleID),
                            .zOrder = zOrder,
                            .layer = *record.layer,
                            .bounds = *record.bounds,
                            .area = record.bounds->area(),
                            .isOnScreen = *record.isOnScreen,
                            .name = record.title};
}

} // namespace lumo
