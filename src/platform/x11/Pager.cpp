#include "platform/x11/Pager.h"

#include "platform/x11/Connection.h"
#include "platform/x11/WindowMirror.h"

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

bool Pager::isHeard() const {
    return mirror_.windowManagerSupports(activeWindow_);
}

void Pager::activate(const MirrorWindow &window) {
    ask(window.client, activeWindow_, fromPager, XCB_CURRENT_TIME,
        mirror_.activeWindow().value_or(XCB_NONE));
}

void Pager::raise(const MirrorWindow &window) {
    if (mirror_.windowManagerSupports(restackWindow_)) {
        ask(window.client, restackWindow_, fromPager, XCB_NONE, XCB_STACK_MODE_ABOVE);
        return;
    }
    // As the application itself would; the request goes to the window manager.
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, window.client, XCB_CONFIG_WINDOW_STACK_MODE, &above);
}

void Pager::ask(xcb_window_t window, xcb_atom_t request, std::uint32_t first, std::uint32_t second,
                std::uint32_t third) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = request;
    message.data.data32[0] = first;
    message.data.data32[1] = second;
    message.data.data32[2] = third;
    xcb_send_event(connection_, 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
}

} // namespace lumo::x11
