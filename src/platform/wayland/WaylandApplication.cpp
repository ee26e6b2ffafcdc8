#include "platform/wayland/WaylandApplication.h"

#include "platform/wayland/windows/WaylandWorkspace.h"

#include <utility>

namespace lumo::wayland {

WaylandApplication::WaylandApplication(WaylandWorkspace &workspace, std::function<void()> terminate)
    : workspace_(workspace)
    , terminate_(std::move(terminate)) {
}

// A window that has just been made comes to the front by itself.
void WaylandApplication::activateIgnoringOtherApps() {
    workspace_.activate(workspace_.ownApplication().processIdentifier, HiddenApplication::show);
}

Handle WaylandApplication::onReopen(std::function<void()> /*observer*/) {
    return {};
}

} // namespace lumo::wayland
