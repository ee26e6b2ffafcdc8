#pragma once

#include "platform/x11/windows/FocusedWindow.h"
#include "platform/x11/windows/MirrorChange.h"
#include "platform/x11/windows/MirrorWindow.h"
#include "platform/x11/windows/RootState.h"
#include "platform/x11/windows/WindowReader.h"
#include "platform/x11/windows/WindowTree.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo::x11 {

class Connection;

// The window tree as the server has it, kept current by events, so that looking at it costs no
// request. Main thread only. Construction waits for the server; nothing after it does.
class WindowMirror {
  public:
    explicit WindowMirror(Connection &connection);
    WindowMirror(const WindowMirror &) = delete;
    WindowMirror &operator=(const WindowMirror &) = delete;

    // The children of the root window from the bottom to the top, unmapped ones included.
    const std::vector<xcb_window_t> &stacking() const { return tree_.stacking(); }

    // By frame or by client; null when there is no such window. Valid until control returns to the
    // loop.
    const MirrorWindow *find(xcb_window_t window) const { return tree_.find(window); }

    // The managed window that has the focus, as the window manager says or, where that says
    // nothing of it, as the keyboard goes there.
    std::optional<xcb_window_t> activeWindow() const {
        return focus_.isFollowing() ? focus_.window() : root_.activeWindow();
    }

    // Empty when no window manager runs or it has no name.
    const std::string &windowManagerName() const { return root_.windowManagerName(); }

    // Whether the window manager says that it understands the hint.
    bool windowManagerSupports(xcb_atom_t hint) const { return root_.supports(hint); }

    // False for a mapped window that its manager, which composites, shows nothing of because it is
    // on another desktop.
    bool isOnShownDesktop(const MirrorWindow &window) const;

    // Has the frame that a window manager makes around that window of ours count as ours as well,
    // until the window is destroyed. Others of ours may lie in windows of other clients.
    void claimFrameOf(xcb_window_t window) { tree_.claimFrameOf(window); }

    // Has the windows of the toolkit's connection, on which this one was made, count as this
    // program's. It may be called for each of its windows.
    void setInterfaceWindow(xcb_window_t window) { tree_.setInterfaceWindow(window); }

    // A number that is another one after each change.
    std::uint64_t revision() const { return tree_.changes().revision(); }

    // The same for changes of anything but what MirrorChange::appearance covers.
    std::uint64_t identityRevision() const { return tree_.changes().identityRevision(); }

    // Calls the observer after each batch of events that changed something.
    Handle onChange(std::function<void(const MirrorChange &)> observer);

    // True when nothing that is known to have changed is still to be read.
    bool isSettled() const;

  private:
    std::array<Handle, 10> subscribe(Connection &connection);
    void followFocus();
    void finishBatch();

    WindowTree tree_;
    RootState root_;
    FocusedWindow focus_;
    WindowReader reader_;
    bool isReadAnew_ = false; // the whole tree whenever the window manager changes
    Signal<MirrorChange> changed_;
    std::array<Handle, 10> events_;
    Handle batches_;
};

} // namespace lumo::x11
