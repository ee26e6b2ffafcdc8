#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/server/ServerResource.h"

#include <xcb/xcb.h>

#include <cstdint>

namespace lumo::x11 {

class Connection;
class RenderFormats;

// The X window of one overlay, and what the server has been told of it. Never focusable, without an
// entry in any task list. It lets clicks through where the server can. Made unmapped.
class OverlaySurface {
  public:
    // Who handles it: nobody (override-redirect), or the window manager.
    enum class Care { none, manager };

    // The first two arguments outlive the object.
    OverlaySurface(Connection &connection, const RenderFormats &formats, Care care,
                   const drawing::PixelRect &area);

    xcb_window_t id() const { return window_.id(); }
    Care care() const { return care_; }
    std::uint8_t depth() const { return depth_; }
    xcb_visualid_t visual() const { return visual_; }
    const drawing::PixelRect &area() const { return area_; }
    bool isMapped() const { return isMapped_; }

    // Whether the server says that clicks go through. Waits for it.
    bool letsClicksThrough() const;

    void move(const drawing::PixelRect &area);
    void setMapped(bool isMapped);

    // Takes away every pixel while staying mapped.
    void setCutAway(bool isCutAway);

    // What there is of it otherwise, from its top left; all of it when there is no region.
    void setShape(OwnedRegion shape);

    // The part of that shape which is drawn; all of it when there is no region.
    void setPattern(OwnedRegion pattern);

  private:
    void create();
    void describe();
    void describeToManager();
    void applyShape();
    void useShape(xcb_xfixes_region_t shape); // none: all of the window

    Connection &connection_;
    Care care_;
    std::uint8_t depth_ = 0;
    xcb_visualid_t visual_ = XCB_NONE;
    OwnedColormap colormap_;
    OwnedWindow window_;
    OwnedRegion nothing_;
    OwnedRegion outside_; // a pixel; some compositing managers take an empty shape for none at all
    OwnedRegion shape_;
    OwnedRegion pattern_;
    drawing::PixelRect area_;
    bool isCutAway_ = false;
    bool isMapped_ = false;
};

} // namespace lumo::x11
