#pragma once

#include "drawing/gl/GlBlur.h"
#include "drawing/gl/GlTools.h"
#include "platform/x11/painting/GlxDevice.h"
#include "platform/x11/painting/GlxSurface.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace lumo::x11 {

// A frame and the pixmaps that it is drawn from and to, by the contract of
// BackdropRenderer::render().
struct GlxFrame {
    xcb_pixmap_t scene = XCB_NONE;
    xcb_pixmap_t canvas = XCB_NONE;
    drawing::GlFrame frame;
};

// All that there is in the graphics hardware, by display. Lives on the thread for it.
class GlDisplays {
  public:
    // Opens the device; what is wrong with it, empty when nothing is.
    std::string open(const std::string &displayName, int screenNumber, std::uint8_t depth,
                     bool softwareWillDo);
    void close();

    // Draws a frame of the display of that number, which is a new one if it is not known. Waits
    // until it is in the canvas; false when that failed.
    bool draw(int display, const GlxFrame &frame);
    void forget(int display) { displays_.erase(display); }

  private:
    struct Display {
        explicit Display(drawing::GlTools &tools)
            : blur(tools) {}

        xcb_pixmap_t scene = XCB_NONE;
        xcb_pixmap_t canvas = XCB_NONE;
        int width = 0;
        int height = 0;
        std::unique_ptr<GlxSurface> surface;
        drawing::GlBlur blur;
    };

    std::unique_ptr<GlxDevice> device_;
    std::unique_ptr<drawing::GlTools> tools_;
    std::map<int, Display> displays_;
};

} // namespace lumo::x11
