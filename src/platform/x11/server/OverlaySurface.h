#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Lifetime.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace lumo::x11 {

class Connection;
class RenderFormats;

// The X window of one overlay, and what the server has been told of it. Never focusable, without an
// entry in any task list. It can be mapped once the server has confirmed its empty input shape, so
// that no click ever meets it. Main thread only; waits for nothing.
class OverlaySurface {
  public:
    // Who stacks and maps it: this program (override-redirect), or the window manager.
    enum class Control { overrideRedirect, managed };

    enum class State {
        unconfirmed, // the server has not replied yet
        unusable,    // the server cannot let clicks through
        unmapped,
        mapped,
    };

    // What keeps a part of it from being seen: the bounding shape; or transparent pixels, under
    // compositing managers, some of which draw a window in a shape that it no longer has.
    enum class Cutting { shape, pixels };

    // The first two arguments outlive the object. Calls stateKnown once, from the main loop, when
    // the state is no longer unconfirmed; never where it has been unusable from the beginning.
    OverlaySurface(Connection &connection, const RenderFormats &formats, Control control,
                   const drawing::PixelRect &area, std::function<void()> stateKnown);

    xcb_window_t id() const { return window_.id(); }
    Control control() const { return control_; }
    State state() const { return state_; }
    bool isMapped() const { return state_ == State::mapped; }
    std::uint8_t depth() const { return depth_; }
    xcb_visualid_t visual() const { return visual_; }
    const drawing::PixelRect &area() const { return area_; }

    void move(const drawing::PixelRect &area);

    // Nothing while the state is neither unmapped nor mapped.
    void map();
    void unmap();

    // Shows the same by other means. Pixels need a depth of 32.
    void setCutting(Cutting cutting);

    // Shows nothing of it while it stays mapped.
    void setCutAway(bool isCutAway);

    // What is shown of it otherwise, from its top left; all of it when there is no region.
    void setShape(OwnedRegion shape);

    // The part of that shape which is drawn; all of it when there is no region. For
    // Cutting::shape.
    void setPattern(OwnedRegion pattern);

    // The pixels of what is shown, a pixmap of the window's depth and, once it has been moved, its
    // size. What comes to be shown from then on has them, also those drawn later.
    void setContents(std::shared_ptr<const OwnedPixmap> contents);

    // Brings the contents to what has been shown before, within the region from the window's top
    // left; everywhere when there is none.
    void present(xcb_xfixes_region_t changed = XCB_NONE);

  private:
    void create();
    void describe();
    void describeToManager();
    void letClicksThrough(std::function<void()> stateKnown);
    void applyShape();
    void applyBoundingShape();
    void applyPixels();
    void useShape(xcb_xfixes_region_t shape); // none: all of the window
    void copyContents(xcb_xfixes_region_t within);

    Connection &connection_;
    Control control_;
    State state_ = State::unconfirmed;
    std::uint8_t depth_ = 0;
    xcb_visualid_t visual_ = XCB_NONE;
    OwnedColormap colormap_;
    OwnedWindow window_;
    OwnedGraphicsContext context_; // for transparent pixels and copies
    OwnedRegion outside_; // a pixel; some compositing managers take an empty shape for none at all
    OwnedRegion shape_;
    OwnedRegion pattern_;
    drawing::PixelRect area_;
    bool isCutAway_ = false;
    Cutting cutting_ = Cutting::shape;
    std::shared_ptr<const OwnedPixmap> contents_;
    OwnedRegion pixels_; // for Cutting::pixels: where the window has its contents
    Lifetime lifetime_;
};

} // namespace lumo::x11
