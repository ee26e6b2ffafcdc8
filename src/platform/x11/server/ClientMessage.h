#pragma once

#include "platform/x11/server/Connection.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace lumo::x11 {

// Sends a message about a window to the clients that selected one of these events on the receiver;
// for no event to the client that made the receiver. At most five values.
inline void sendClientMessage(Connection &connection, xcb_window_t receiver,
                              std::uint32_t eventMask, xcb_window_t window, xcb_atom_t type,
                              std::initializer_list<std::uint32_t> values) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::ranges::copy(values, message.data.data32);
    xcb_send_event(connection, 0, receiver, eventMask, reinterpret_cast<const char *>(&message));
}

// Asks the window manager for something about a window.
inline void askWindowManager(Connection &connection, xcb_window_t window, xcb_atom_t request,
                             std::initializer_list<std::uint32_t> values) {
    sendClientMessage(connection, connection.root(),
                      XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                      window, request, values);
}

} // namespace lumo::x11
