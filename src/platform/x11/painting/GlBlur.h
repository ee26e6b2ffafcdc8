#pragma once

#include "drawing/BlurGrid.h"
#include "drawing/gl/GlLayers.h"
#include "drawing/gl/GlTools.h"
#include "platform/x11/painting/GlxDevice.h"

#include <xcb/xcb.h>

#include <map>
#include <memory>
#include <vector>

namespace lumo::x11 {

// One drawing: these parts of the canvas, by the contract of BackdropRenderer::render().
struct GlFrame {
    int width = 0; // of both pixmaps
    int height = 0;
    xcb_pixmap_t scene = XCB_NONE;
    xcb_pixmap_t canvas = XCB_NONE;
    std::shared_ptr<const drawing::GlLayers> layers;
    drawing::Region parts;
};

// The state in the graphics hardware of one display, and its drawing. Lives on the device's thread.
class GlBlur {
  public:
    GlBlur(GlxDevice &device, drawing::GlTools &tools);
    ~GlBlur();
    GlBlur(const GlBlur &) = delete;
    GlBlur &operator=(const GlBlur &) = delete;

    // Waits until it is in the canvas. False when that failed.
    bool draw(const GlFrame &frame);

  private:
    // The scene on a coarser grid with a margin of one texel, or a blur of that. What was not
    // within the parts is from before.
    struct Grid {
        int factor = 1;
        int width = 0;
        int height = 0;
        drawing::GlTexture texture;
    };
    struct Blurred {
        drawing::BlurGrid blur;
        Grid across; // in one direction
        Grid whole;
    };

    bool adopt(const GlFrame &frame);
    void releasePixmaps();
    void planBlurs();
    Grid makeGrid(int factor) const;
    void drawScene(const GlFrame &frame);
    void reduce(const drawing::Region &parts);
    void blurAll(const drawing::Region &parts);
    void blurPass(const drawing::BlurGrid &blur, const Grid &from, const Grid &to, float dx,
                  float dy, const drawing::Region &parts);
    void compose(const drawing::Region &parts);
    void setLayers();

    GlxDevice &device_;
    drawing::GlTools &tools_;
    GlFrame adopted_; // without its parts
    GLXPixmap source_ = 0;
    GLXPixmap target_ = 0;
    drawing::GlTexture scene_;
    std::map<int, Grid> reduced_;  // by factor
    std::vector<Blurred> blurred_; // of the backdrop layers that blur, in their order
};

} // namespace lumo::x11
