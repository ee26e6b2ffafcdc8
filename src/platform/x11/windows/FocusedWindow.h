#pragma once

#include "platform/x11/server/PendingReads.h"
#include "support/Handle.h"

#include <xcb/xcb.h>

#include <array>
#include <functional>
#include <optional>

namespace lumo::x11 {

class Connection;
class WindowTree;

// Which window of the tree has the keyboard, for window managers that do not name the active one:
// the one that the input focus is in or, where the focus follows the pointer, the one beneath that.
// Main thread only; waits for nothing.
class FocusedWindow {
  public:
    // Calls the function after each change. The first two arguments outlive the object.
    FocusedWindow(Connection &connection, const WindowTree &tree, std::function<void()> changed);

    // Follows the focus from now on, or forgets it. Focus and enter events of the children of the
    // root window have been selected while it does.
    void follow(bool follows);
    bool isFollowing() const { return follows_; }

    // The focus may have changed, or a window manager may have come or gone.
    void want();

    // Asks the server for what is wanted.
    void requestReads();

    // Absent while no window manager runs. Where nothing has the keyboard, the last one that had
    // it.
    std::optional<xcb_window_t> window() const { return window_; }

    // True when nothing is being read.
    bool isSettled() const { return reads_.isIdle() && replies_.isEmpty(); }

  private:
    void applyFocus(xcb_window_t focus);
    void search(xcb_window_t window);
    void set(std::optional<xcb_window_t> window);

    Connection &connection_;
    const WindowTree &tree_;
    std::function<void()> changed_;
    bool follows_ = false;
    bool isManaged_ = false; // a window manager handles the windows
    std::optional<xcb_window_t> window_;
    PendingReads reads_;
    ReplyQueue replies_;
    std::array<Handle, 3> events_;
};

} // namespace lumo::x11
