#include "platform/wayland/WaylandStatusItem.h"

#include "platform/wayland/client/WaylandScreens.h"

#include <utility>

namespace lumo::wayland {

WaylandStatusItem::WaylandStatusItem(freedesktop::SessionBus &bus, const WaylandScreens &screens)
    : screens_(screens)
    , notifierItem_(bus) {
}

Handle WaylandStatusItem::onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) {
    return notifierItem_.onContextMenu([this, observer = std::move(observer)](int x, int y) {
        const auto pixel = screens_.pointSpace().screenFrame({x, y, 1, 1});
        observer({std::nullopt, {pixel.x, pixel.maxY()}});
    });
}

} // namespace lumo::wayland
