#include "platform/x11/windows/Pager.h"

#include "platform/x11/server/ClientMessage.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

namespace lumo::x11 {

namespace {

// The source indication of a request in the user's name.
constexpr std::uint32_t fromPager = 2;

} // namespace

Pager::Pager(Connection &connection, const WindowMirror &mirror)
    : connection_(connection)
    , mirror_(mirror)
    , activeWindow_(connection.atom("_NET_ACTIVE_WINDOW"))
    , restackWindow_(connection.atom("_NET_RESTACK_WINDOW")) {
}

bool Pager::isAvailable() const {
    return mirror_.windowManagerSupports(activeWindow_);
}

void Pager::activate(const MirrorWindow &window) {
    askWindowManager(connection_, window.client, activeWindow_,
                     {fromPager, XCB_CURRENT_TIME, mirror_.activeWindow().value_or(XCB_NONE)});
}

void Pager::raise(const MirrorWindow &window) {
    if (mirror_.windowManagerSupports(restackWindow_)) {
        askWindowManager(connection_, window.client, restackWindow_,
                         {fromPager, XCB_NONE, XCB_STACK_MODE_ABOVE});
        return;
    }
    // As the application itself would; the request goes to the window manager.
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, window.client, XCB_CONFIG_WINDOW_STACK_MODE, &above);
}

} // namespace lumo::x11
