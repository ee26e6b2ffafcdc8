#pragma once

#include "platform/x11/input/InputRouter.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <vector>

namespace lumo::x11 {

class Connection;
class WindowMirror;

// Tells whether what the user types and points at goes to a window of this program's own interface.
// Those are the windows of this process that were made on another connection, the toolkit's: the
// overlays never receive any input. Follows the focus and crossing events of the input extension,
// and the toolkit's own grabs of the keyboard, which its popups make before their windows are
// described. Main thread only.
class OwnInput {
  public:
    // The server must have the input extension.
    OwnInput(Connection &connection, WindowMirror &mirror);
    OwnInput(const OwnInput &) = delete;
    OwnInput &operator=(const OwnInput &) = delete;

    InputFocus focus() const {
        return {.hasKeyboard = keyboardWindow_ != XCB_NONE || grabWindow_ != XCB_NONE,
                .hasPointer = pointerWindow_ != XCB_NONE};
    }

    // Takes note of a FocusIn or FocusOut event that the toolkit read.
    void handleToolkitFocus(const xcb_focus_in_event_t &event);

  private:
    void followMirror();
    void watch(xcb_window_t frame, xcb_window_t client);

    Connection &connection_;
    WindowMirror &mirror_;
    std::uint64_t seenRevision_ = 0;
    std::vector<xcb_window_t> watched_;      // sorted
    xcb_window_t keyboardWindow_ = XCB_NONE; // of watched_
    xcb_window_t pointerWindow_ = XCB_NONE;  // of watched_
    xcb_window_t grabWindow_ = XCB_NONE;     // that the toolkit grabbed the keyboard for
    Handle changes_;
    std::array<Handle, 4> events_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
