#pragma once

#include "drawing/PixelRect.h"
#include "support/Handle.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland::sway {

// Menus and other windows that X applications show past the window manager: sway has them in no
// tree and draws them beneath overlays. Followed at Xwayland, which ends with its last client, so
// only while there are other windows of X applications. Main thread only.
class UnmanagedWindows {
  public:
    // Connects to the X server that DISPLAY names and waits for it; there are no areas when none
    // answers there that belongs to the compositor's process. Calls the function after areas() has
    // become different. The main loop outlives the object.
    UnmanagedWindows(std::int32_t compositor, freedesktop::GlibMainLoop &mainLoop,
                     std::function<void()> changed);
    ~UnmanagedWindows();
    UnmanagedWindows(const UnmanagedWindows &) = delete;
    UnmanagedWindows &operator=(const UnmanagedWindows &) = delete;

    // What they cover, in points of the compositor's space.
    const std::vector<drawing::PixelRect> &areas() const { return areas_; }

  private:
    struct Window {
        drawing::PixelRect area;
        bool isUnmanaged = false;
        bool isMapped = false;
    };

    void readAll();
    bool dispatch();
    void take(const xcb_generic_event_t &event);
    void refresh();

    xcb_connection_t *connection_;
    xcb_window_t root_ = XCB_NONE;
    std::function<void()> changed_;
    std::map<xcb_window_t, Window> windows_; // all children of the root window
    std::vector<drawing::PixelRect> areas_;
    Handle watch_;
};

} // namespace lumo::wayland::sway
