#pragma once

#include "platform/x11/PixelRect.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumo::x11 {

class Connection;

// What a top-level window is for, as far as ordering goes.
enum class WindowBand {
    desktop,  // the desktop itself, under everything and in no list
    below,    // kept below by the user
    normal,   // ordinary windows
    above,    // docks and windows that are kept on top
    floating, // menus, tool tips, notifications and other windows that no manager handles
};

// One child of the root window, with what is known of the managed window in it.
struct MirrorWindow {
    xcb_window_t frame = XCB_NONE;  // the child of the root window
    xcb_window_t client = XCB_NONE; // the managed window inside, or the frame itself
    PixelRect geometry;             // of the frame, its border included
    int borderWidth = 0;            // of the frame, in pixels on each side
    bool isMapped = false;
    bool isInputOnly = false;
    bool isManaged = false; // a window manager handles the client
    std::uint8_t depth = 0;
    xcb_visualid_t visual = XCB_NONE;
    WindowBand band = WindowBand::normal;
    double opacity = 1;
    std::int32_t processIdentifier = 0; // 0 when unknown
    std::string className;              // the class part of WM_CLASS
    std::optional<std::string> title;
};

// What changed since the last announcement. The mirror gathers a batch of events before it
// announces.
struct MirrorChange {
    bool stacking = false;   // order, or the set of windows
    bool appearance = false; // geometry, mapping, shape, opacity: what would be seen differently
    bool properties = false; // titles, owners, bands
    bool activeWindow = false;
    bool currentDesktop = false;
    bool windowManager = false; // came, went or was replaced
    bool wallpaper = false;     // the root window's pixmap property
};

// The window tree as the server has it, kept current by events, so that reading it costs no
// request. Main thread only.
class WindowMirror {
  public:
    explicit WindowMirror(Connection &connection);
    ~WindowMirror();

    // The children of the root window from the bottom to the top, unmapped ones included.
    const std::vector<xcb_window_t> &stacking() const;

    // By frame or by client; null when there is no such window. Valid until control returns to the
    // loop.
    const MirrorWindow *find(xcb_window_t window) const;

    // The managed window that has the focus, as the window manager says.
    std::optional<xcb_window_t> activeWindow() const;

    // Empty when no window manager runs or it has no name.
    const std::string &windowManagerName() const;

    // Calls the observer after each batch of events that changed something.
    Handle onChange(std::function<void(const MirrorChange &)> observer);
};

} // namespace lumo::x11
