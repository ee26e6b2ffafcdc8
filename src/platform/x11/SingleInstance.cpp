#include "platform/x11/SingleInstance.h"

#include "platform/x11/Connection.h"

#include <string>
#include <utility>

namespace lumo::x11 {

std::optional<SingleInstance> SingleInstance::claim(Connection &connection) {
    const auto selection =
        connection.atom("_LUMO_INSTANCE_S" + std::to_string(connection.screenNumber()));
    const auto window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    // Two that start at the same moment must not both find the selection free.
    xcb_grab_server(connection);
    const auto owner = connection.wait(xcb_get_selection_owner(connection, selection),
                                       xcb_get_selection_owner_reply);
    const bool isFree = owner && owner->owner == XCB_NONE;
    if (isFree) {
        xcb_set_selection_owner(connection, window, selection, XCB_CURRENT_TIME);
    }
    xcb_ungrab_server(connection);
    SingleInstance instance(connection, window);
    connection.flush();
    return isFree ? std::optional(std::move(instance)) : std::nullopt;
}

SingleInstance::SingleInstance(Connection &connection, xcb_window_t owner)
    : connection_(connection)
    , owner_(owner) {
}

SingleInstance::SingleInstance(SingleInstance &&other) noexcept
    : connection_(other.connection_)
    , owner_(std::exchange(other.owner_, XCB_NONE)) {
}

SingleInstance::~SingleInstance() {
    if (owner_ != XCB_NONE) {
        xcb_destroy_window(connection_, owner_);
    }
}

} // namespace lumo::x11
