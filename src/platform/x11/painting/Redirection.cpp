#include "platform/x11/painting/Redirection.h"

#include "platform/x11/server/Connection.h"

#include <xcb/composite.h>

namespace lumo::x11 {

Handle Redirection::hold() {
    if (!connection_.extensions().composite) {
        return {};
    }
    if (holders_++ == 0) {
        xcb_composite_redirect_subwindows(connection_, connection_.root(),
                                          XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    }
    return Handle([this] {
        if (--holders_ == 0) {
            xcb_composite_unredirect_subwindows(connection_, connection_.root(),
                                                XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        }
    });
}

} // namespace lumo::x11
