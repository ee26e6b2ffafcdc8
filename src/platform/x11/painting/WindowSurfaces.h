#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/damage.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <unordered_map>

namespace lumo::x11 {

class Connection;
class RenderFormats;
class WindowMirror;
struct MirrorWindow;

// The pixels of one child of the root window, whatever covers it. Positions on the root window.
struct WindowSurface {
    drawing::PixelRect geometry; // border included
    drawing::PixelRect visible;  // what of that a rectangle can tell to show something
    double opacity = 1;          // that is wished for the window as a whole
    int borderWidth = 0;         // on each side
    OwnedPicture picture;        // of the geometry's size, taken as opaque
    OwnedPicture alpha;          // the same with its alpha, premultiplied; none where it has none
    OwnedRegion shape;           // where the window is, within the geometry
    OwnedDamage damage;
    std::uint64_t version = 0;        // another one after each change that damage does not tell
    std::uint32_t followedSince = 0;  // the request; what was damaged before that does not matter
    drawing::PixelRect damagedBounds; // as far as events have told; empty when there is no damage
};

// Where a window has drawn, on the root window.
struct SurfaceDamage {
    xcb_window_t window = XCB_NONE;
    xcb_xfixes_region_t region = XCB_NONE; // exact
    drawing::PixelRect bounds;             // of what the events so far have told
};

// The surfaces of other programs' windows, shared by all that is drawn from them. The server keeps
// such pixels only of redirected windows, so a Redirection must be held. Nothing here waits for the
// server: a window that is gone by the time of a request draws nothing. Main thread only.
class WindowSurfaces {
  public:
    WindowSurfaces(Connection &connection, WindowMirror &mirror, const RenderFormats &formats);

    // The surface of a child of the root window as it is now; null while it has none to show. Valid
    // until the next call for the same window.
    const WindowSurface *find(xcb_window_t window);

    // Announces the damage to the window since the last call, if there was any. The region is valid
    // within the observer.
    void collectDamage(xcb_window_t window);
    Handle onDamage(std::function<void(const SurfaceDamage &)> observer);

    // Calls the observer when a window may look different: once after it has been damaged, until
    // that damage is collected. XCB_NONE stands for a change that concerns more than one.
    Handle onStale(std::function<void(xcb_window_t)> observer);

    // The surfaces are given up when the last of these is released.
    Handle use();

  private:
    void handleDamage(const xcb_damage_notify_event_t &event, std::uint32_t sequence);
    void handleShape(const xcb_shape_notify_event_t &event);
    void handleConfigure(const xcb_configure_notify_event_t &event);
    void name(const MirrorWindow &named, WindowSurface &surface);
    void readShape(xcb_window_t window, WindowSurface &surface);

    Connection &connection_;
    WindowMirror &mirror_;
    const RenderFormats &formats_;
    std::unordered_map<xcb_window_t, WindowSurface> surfaces_;
    std::uint64_t lastVersion_ = 0;
    int users_ = 0;
    Signal<SurfaceDamage> damaged_;
    Signal<xcb_window_t> stale_;
    OwnedRegion damage_; // while it is announced
    std::array<Handle, 6> events_;
    Handle mirrorChanges_;
};

} // namespace lumo::x11
