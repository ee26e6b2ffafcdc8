#include "platform/x11/X11Application.h"

#include "platform/x11/server/SingleInstance.h"
#include "platform/x11/windows/X11Workspace.h"

#include <utility>

namespace lumo::x11 {

X11Application::X11Application(SingleInstance &instance, X11Workspace &workspace,
                               std::function<void()> terminate)
    : instance_(instance)
    , workspace_(workspace)
    , terminate_(std::move(terminate)) {
}

// A window that has just been made comes to the front by itself.
void X11Application::activateIgnoringOtherApps() {
    workspace_.activate(workspace_.ownApplication().processIdentifier, HiddenApplication::show);
}

Handle X11Application::onReopen(std::function<void()> observer) {
    return instance_.onReopenRequest(std::move(observer));
}

} // namespace lumo::x11
