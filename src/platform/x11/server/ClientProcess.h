#pragma once

#include <xcb/res.h>

#include <cstdint>

namespace lumo::x11 {

// Asks for the process that made a window, as the server knows it. Needs X-Resource 1.2.
xcb_res_query_client_ids_cookie_t requestProcess(xcb_connection_t *connection, xcb_window_t window);

// The process of such a reply; 0 when it is unknown or the window is gone.
std::int32_t processOf(const xcb_res_query_client_ids_reply_t *reply);

} // namespace lumo::x11
