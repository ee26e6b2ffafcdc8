#include "platform/x11/server/ClientProcess.h"

namespace lumo::x11 {

xcb_res_query_client_ids_cookie_t requestProcess(xcb_connection_t *connection,
                                                 xcb_window_t window) {
    const xcb_res_client_id_spec_t client = {window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(connection, 1, &client);
}

std::int32_t processOf(const xcb_res_query_client_ids_reply_t *reply) {
    if (reply == nullptr) {
        return 0;
    }
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply); id.rem > 0;
         xcb_res_client_id_value_next(&id)) {
        if ((id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
            xcb_res_client_id_value_value_length(id.data) > 0) {
            return static_cast<std::int32_t>(xcb_res_client_id_value_value(id.data)[0]);
        }
    }
    return 0;
}

} // namespace lumo::x11
