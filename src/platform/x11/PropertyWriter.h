#pragma once

#include "platform/x11/Connection.h"

#include <xcb/xcb.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace lumo::x11 {

// Replaces a property of a window by text of that type.
inline void setText(Connection &connection, xcb_window_t window, xcb_atom_t property,
                    xcb_atom_t type, std::string_view text) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

// Replaces a property of a window by 32-bit values of that type.
template <std::size_t count>
void setValues(Connection &connection, xcb_window_t window, std::string_view property,
               xcb_atom_t type, const std::array<std::uint32_t, count> &values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, connection.atom(property), type,
                        32, count, values.data());
}

} // namespace lumo::x11
