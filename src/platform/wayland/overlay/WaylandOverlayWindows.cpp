#include "platform/wayland/overlay/WaylandOverlayWindows.h"

#include "platform/wayland/client/Connection.h"

#include <layer-shell-client-protocol.h>
#include <unistd.h>
#include <viewporter-client-protocol.h>

namespace lumo::wayland {

WaylandOverlayWindows::WaylandOverlayWindows(Connection &connection, WaylandScreens &screens,
                                             WindowSource &source, MainLoop &mainLoop)
    : factories_{connection.bind<wl_compositor>(wl_compositor_interface, 4),
                 connection.bind<wl_shm>(wl_shm_interface, 1),
                 connection.bind<wp_viewporter>(wp_viewporter_interface, 1),
                 connection.bind<zwlr_layer_shell_v1>(zwlr_layer_shell_v1_interface, 3),
                 std::make_unique<BackgroundBlur>(connection)}
    , surroundings_{mainLoop, screens, source, factories_, {.process = getpid()}} {
}

void WaylandOverlayWindows::setRounded(const std::string &title, double cornerRadius) {
    surroundings_.own.roundedTitle = title;
    surroundings_.own.cornerRadius = cornerRadius;
}

std::unique_ptr<PlatformWindow> WaylandOverlayWindows::makeWindow(const Rect &frame) {
    return std::make_unique<WaylandPlatformWindow>(surroundings_, nextNumber_--, frame);
}

} // namespace lumo::wayland
