#pragma once

#include "desktop/PrivateDesktop.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo::x11 {

// A private desktop with the program's own connection and mirror on it.
class MirroredDesktop {
  public:
    explicit MirroredDesktop(const desktop::DesktopOptions &options);

    // Dispatches until all that has happened on the server so far is in the mirror.
    void catchUp();

    // Dispatches until the condition holds. False when it does not within ten seconds.
    bool eventually(const std::function<bool()> &condition);

    const MirrorWindow &window(xcb_window_t window) const;

    desktop::PrivateDesktop desktop;
    desktop::DesktopSession &session = desktop.session();
    std::unique_ptr<Connection> connection = Connection::open(desktop.displayName().c_str());
    std::unique_ptr<WindowMirror> mirror = std::make_unique<WindowMirror>(*connection);
};

// Compares the mirror with the server, which must be at rest; empty when they agree, else the first
// difference.
std::string differenceFromServer(Connection &connection, const WindowMirror &mirror);

} // namespace lumo::x11
