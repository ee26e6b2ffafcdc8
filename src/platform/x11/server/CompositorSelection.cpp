#include "platform/x11/server/CompositorSelection.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <xcb/xfixes.h>

#include <string>
#include <utility>

namespace lumo::x11 {

CompositorSelection::CompositorSelection(Connection &connection,
                                         std::function<void(xcb_window_t)> observer)
    : connection_(connection)
    , atom_(connection.atom("_NET_WM_CM_S" + std::to_string(connection.screenNumber()))) {
    if (!connection.extensions().xfixes) {
        return;
    }
    events_ = connection.events().on(event::selectionNotify,
                                     [this, observer = std::move(observer)](const auto &notify) {
                                         if (notify.selection == atom_) {
                                             observer(notify.owner);
                                         }
                                     });
    xcb_xfixes_select_selection_input(connection, connection.root(), atom_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
}

xcb_get_selection_owner_cookie_t CompositorSelection::requestOwner() const {
    return xcb_get_selection_owner(connection_, atom_);
}

} // namespace lumo::x11
