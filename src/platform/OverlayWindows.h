#pragma once

#include "platform/LayerTree.h"
#include "support/Geometry.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace lumo {

// One overlay window: borderless, never focusable, transparent to clicks, on all spaces, in no task
// list. Main thread only. Frames are in points in the space of Screen::frame. What is asked for
// within one turn of the main loop reaches the screen as one change.
//
// Overlays among themselves keep their order: one that was asked to be at the front, or below a
// window, is there when nothing but other overlays lies between. So asking again for what already
// holds changes nothing, with any number of displays.
class PlatformWindow {
  public:
    // Orders the window out and closes it.
    virtual ~PlatformWindow() = default;

    // The window's number in the window list. Always fits an unsigned 32-bit integer.
    virtual std::int64_t windowNumber() const = 0;

    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect &frame) = 0;

    // The band in which the window is ordered; 0 is that of ordinary windows.
    virtual int level() const = 0;
    virtual void setLevel(int level) = 0;

    // The whole window's opacity, 0 to 1, apart from what its layers say.
    virtual double alphaValue() const = 0;
    virtual void setAlphaValue(double alpha) = 0;

    // Shows the window above all ordinary windows of other programs, but below this program's own
    // where they lie above those, and below docks, menus and whatever is kept on top.
    virtual void orderFront() = 0;

    // Shows the window directly below the window of that number. When that window is gone, or is
    // not on screen, the order stays as it is.
    virtual void orderBelow(std::uint32_t windowNumber) = 0;

    virtual void orderOut() = 0;

    // Pixels per point of the screen that the window is on. While it is on none, those of the main
    // screen where the desktop has such a notion of its own, else absent.
    virtual std::optional<double> backingScaleFactor() const = 0;

    // Shows the tree from now on, without animation. An equal tree costs a comparison and nothing
    // else.
    virtual void commit(const LayerTree &tree) = 0;
};

class OverlayWindows {
  public:
    virtual ~OverlayWindows() = default;

    // A new overlay window with this frame, at level 0, alpha 1, with nothing to show, not ordered
    // in.
    virtual std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) = 0;
};

} // namespace lumo
