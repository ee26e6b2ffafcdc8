#pragma once

#include "support/Handle.h"
#include "support/Lifetime.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace lumo::x11 {

class Connection;
class WindowMirror;

// Tells whether what the user types and points at goes to a window of this program's own interface.
// Those are the windows of this process that were made on another connection: the overlays never
// get any input. Follows the server's own account of it, in the order of the events. Main thread
// only.
class OwnInput {
  public:
    // The server must have the input extension.
    OwnInput(Connection &connection, WindowMirror &mirror);
    OwnInput(const OwnInput &) = delete;
    OwnInput &operator=(const OwnInput &) = delete;

    bool hasKeyboard() const { return keyboardWindow_ != XCB_NONE; }
    bool hasPointer() const { return pointerWindow_ != XCB_NONE; }

    // Takes note of an event of the input extension.
    void handle(const xcb_ge_generic_event_t &event);

  private:
    void followMirror();
    void watch(xcb_window_t frame, xcb_window_t client);

    Connection &connection_;
    WindowMirror &mirror_;
    std::uint64_t seenRevision_ = 0;
    std::vector<xcb_window_t> watched_;      // sorted
    xcb_window_t keyboardWindow_ = XCB_NONE; // of watched_
    xcb_window_t pointerWindow_ = XCB_NONE;
    Handle changes_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
