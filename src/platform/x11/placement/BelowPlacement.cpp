#include "platform/x11/placement/BelowPlacement.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

#include <array>

namespace lumo::x11 {

Placement::Outcome BelowPlacement::enforce(const Order &order) {
    const auto wanted = target(order);
    if (!wanted || underWay_ == order) {
        return Outcome::pursued;
    }
    if (isConflict(order, *wanted)) {
        return Outcome::abandoned;
    }
    if (wanted->sibling == nullptr) {
        xcb_configure_window(connection_, overlay_, XCB_CONFIG_WINDOW_STACK_MODE,
                             &wanted->stackMode);
    } else {
        const std::array<std::uint32_t, 2> values = {wanted->sibling->frame, wanted->stackMode};
        xcb_configure_window(connection_, overlay_,
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                             values.data());
    }
    // Its events have arrived by the time this is answered.
    underWay_ = order;
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_), lifetime_.guard([this, order](const auto *) {
            if (underWay_ == order) {
                underWay_.reset();
            }
        }));
    return Outcome::pursued;
}

} // namespace lumo::x11
