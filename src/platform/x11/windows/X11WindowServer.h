#pragma once

#include "platform/WindowServer.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace lumo::x11 {

class WindowMirror;
class X11Screens;
class X11Workspace;
struct MirrorWindow;

// The window list, made from the mirror when it is asked for and something has changed.
//
// On screen is what is viewable, draws, is not minimised and not on a desktop that is not shown.
// Windows come in their stacking order, but the active window, when it is an ordinary one, is the
// first of the ordinary ones: focus does not always raise here, and the frontmost ordinary
// window stands for the one that the user works in. The window whose dialog it is comes next. While
// a dock is active it is the window that was so before.
class X11WindowServer final : public WindowServer {
  public:
    // The layers of windows that are not ordinary: kept below, kept above, docks, and menus with
    // everything else that no manager handles.
    static constexpr int belowLayer = -1;
    static constexpr int aboveLayer = 3;
    static constexpr int dockLayer = 20;
    static constexpr int floatingLayer = 101;

    X11WindowServer(const WindowMirror &mirror, const X11Screens &screens,
                    const X11Workspace &workspace);

    std::shared_ptr<const WindowRecords> onScreenWindows() const override;

  private:
    struct Revisions {
        std::uint64_t mirror = 0;
        std::uint64_t screens = 0;
        std::uint64_t workspace = 0;

        bool operator==(const Revisions &) const = default;
    };

    bool isOnScreen(const MirrorWindow &window) const;
    WindowRecords makeRecords() const;
    std::vector<const MirrorWindow *> activeWindowAndOwners() const;
    WindowRecord makeRecord(const MirrorWindow &window) const;

    const WindowMirror &mirror_;
    const X11Screens &screens_;
    const X11Workspace &workspace_;
    mutable std::optional<xcb_window_t> lastActive_; // that is no dock
    mutable Revisions madeFrom_;
    mutable std::shared_ptr<const WindowRecords> records_;
};

} // namespace lumo::x11
