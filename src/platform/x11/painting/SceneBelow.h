#pragma once

#include "drawing/Region.h"
#include "platform/x11/painting/SceneEntry.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <functional>
#include <vector>

namespace lumo::x11 {

class Connection;
class Wallpaper;
class WindowSurfaces;
struct SurfaceDamage;
struct WindowSurface;

// What a person would see of one part of the root window if the overlay and all above it were gone:
// the wallpaper and the lower windows. Keeps account of what has changed there since it was last
// drawn, so that only this needs drawing. Main thread only.
class SceneBelow {
  public:
    // Gives the lower windows as children of the root window, from the bottom to the top. Those
    // that are not mapped may be among them.
    using LowerWindows = std::function<std::vector<xcb_window_t>()>;

    enum class Windows {
        opaque,  // as a server without a compositing manager shows them
        blended, // with their alpha and opacity, and without what of their frames shows nothing
    };

    SceneBelow(Connection &connection, WindowSurfaces &surfaces, Wallpaper &wallpaper,
               Windows windows, LowerWindows lowerWindows);

    // The part of the root window that is shown. All of it has changed when it is another one.
    void setArea(const drawing::PixelRect &area);

    // Everything is to be drawn anew.
    void invalidate();

    // Brings the account up to date. True when there is something to draw.
    bool update();

    // What is to be drawn, on the root window.
    xcb_xfixes_region_t changes() const { return changes_.id(); }

    // A region around it that is known without asking the server. What has been damaged since the
    // last event is in changes() only; it comes here with its event, later.
    const drawing::Region &knownChanges() const { return knownChanges_; }

    // Draws what has changed, opaque. The picture's origin is the area's top left. Leaves the
    // picture clipped to what has changed.
    void draw(xcb_render_picture_t onto);

    // Begins a new account: all that has changed so far has reached its destination.
    void settle();

    // Calls the observer when update() might find something, about once until it is called.
    Handle onStale(std::function<void()> observer);

  private:
    struct VisibleWindow {
        const WindowSurface *surface;
        xcb_xfixes_region_t clip; // on the root window
    };

    bool contains(xcb_window_t window) const;
    void addDamage(const SurfaceDamage &damage);
    void add(const drawing::Region &changed);
    std::vector<SceneEntry> currentEntries();
    // From the top to the bottom, each clipped to what changed of it and no opaque window covers.
    // Leaves in the scratch region what is left for the wallpaper.
    std::vector<VisibleWindow> findVisible();
    bool isOpaque(const WindowSurface &surface) const;
    void drawWindow(const VisibleWindow &window, xcb_render_picture_t onto);
    void clip(xcb_render_picture_t picture, xcb_xfixes_region_t region);

    Connection &connection_;
    WindowSurfaces &surfaces_;
    Wallpaper &wallpaper_;
    Windows windows_;
    LowerWindows lowerWindows_;
    drawing::PixelRect area_;
    std::vector<SceneEntry> entries_; // as they were at the last update
    OwnedRegion changes_;
    drawing::Region knownChanges_;
    OwnedRegion scratch_;
    std::vector<OwnedRegion> clips_; // of the visible windows, kept for the next drawing
    Signal<> stale_;
    Handle surfacesInUse_;
    Handle damage_;
    Handle surfaceChanges_;
    Handle wallpaperChanges_;
};

} // namespace lumo::x11
