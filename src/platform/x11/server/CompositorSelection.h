#pragma once

#include "support/Handle.h"

#include <xcb/xcb.h>

#include <functional>

namespace lumo::x11 {

class Connection;

// The selection that a compositing manager of this screen owns while it runs (ICCCM 2.8, EWMH
// "_NET_WM_CM_Sn"). Main thread only.
class CompositorSelection {
  public:
    // Calls the observer with the new owner, XCB_NONE where there is none now, at each change of
    // it. A server without XFixes announces none.
    CompositorSelection(Connection &connection, std::function<void(xcb_window_t owner)> observer);

    xcb_get_selection_owner_cookie_t requestOwner() const;

  private:
    Connection &connection_;
    xcb_atom_t atom_;
    Handle events_;
};

} // namespace lumo::x11
