#pragma once

#include "platform/x11/server/Connection.h"

#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace lumo::x11 {

// Replaces a property of a window by text of that type.
inline void setText(Connection &connection, xcb_window_t window, xcb_atom_t property,
                    xcb_atom_t type, std::string_view text) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

// Replaces a property of a window by 32-bit values of that type.
inline void setValues(Connection &connection, xcb_window_t window, std::string_view property,
                      xcb_atom_t type, std::initializer_list<std::uint32_t> values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, connection.atom(property), type,
                        32, static_cast<std::uint32_t>(values.size()), values.begin());
}

// Tells whose window it is, and what it is called.
inline void setIdentity(Connection &connection, xcb_window_t window, std::string_view title) {
    setText(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
            std::string_view("lumo\0Lumo", sizeof "lumo\0Lumo"));
    setText(connection, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
    setText(connection, window, connection.atom("_NET_WM_NAME"), connection.atom("UTF8_STRING"),
            title);
    setValues(connection, window, "_NET_WM_PID", XCB_ATOM_CARDINAL,
              {static_cast<std::uint32_t>(getpid())});
}

} // namespace lumo::x11
