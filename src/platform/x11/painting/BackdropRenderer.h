#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/painting/Painter.h"

#include <xcb/render.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace lumo::x11 {

// The pixmaps between which a renderer works. All are of the overlay's size in pixels and have the
// overlay window's depth and format; their owner keeps them until the next prepare() or the
// renderer's end.
struct RenderTarget {
    int width = 0;
    int height = 0;
    std::uint8_t depth = 0;
    xcb_render_pictformat_t format = XCB_NONE;

    // What lies beneath the overlay, unfiltered and opaque (an alpha channel is all ones), holding
    // wallpaper and lower windows only. The same as the canvas for a renderer that draws in place.
    xcb_pixmap_t scenePixmap = XCB_NONE;
    xcb_render_picture_t scene = XCB_NONE;

    // What the overlay window shows. Always opaque in the end, also under a compositing manager:
    // where the layers let something through, by their alpha or by the mask, it is the scene that
    // shows.
    xcb_pixmap_t canvasPixmap = XCB_NONE;
    xcb_render_picture_t canvas = XCB_NONE;
};

// Turns the scene beneath an overlay into what the overlay shows: the scene with the layers of the
// appearance drawn over it. Made for one overlay, and driven by its ScenePainter, which keeps the
// account of what has changed, draws the scene, brings the canvas to the window and sees to it that
// there is at most one drawing per refresh. So a renderer has no clock and no events of its own,
// and asks for nothing while nothing is asked of it.
//
// How a backdrop layer is drawn: the whole scene goes through the layer's filters in their order.
// gaussianBlur has inputRadius points as its standard deviation, times the layer's "scale" option
// in pixels, and is cut off at three of them; its weights are normalised over what lies within the
// target. colorBrightness adds inputAmount to each channel; colorSaturate is the lerp from the luma
// (0.2126, 0.7152, 0.0722) to the colour by inputAmount; colorContrast is (c - 0.5) * inputAmount +
// 0.5. Channels are as stored (no linear light), from 0 to 1, and clamped to that once, after the
// layer's last filter. The result is opaque; it is blended over the layers beneath with the layer's
// opacity and compositing filter, as in LayerTree.h. Mask and PlacedLayers::alpha then say how much
// of the blended layers is laid over the scene.
//
// Main thread only. Nothing waits for the server.
class BackdropRenderer {
  public:
    virtual ~BackdropRenderer() = default;

    // False for one that draws its layers over the scene in the very canvas. Such a one has no
    // reach.
    virtual bool needsSceneApart() const = 0;

    // What render() is to draw and between which pixmaps from now on. Ends an unfinished render()
    // without its function being called. Everything is rendered anew after it.
    virtual void prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) = 0;

    // By how many pixels a change of one pixel of the scene spreads in the canvas, for what was
    // prepared. Small steps that can't be seen may be left out.
    virtual int reach() const = 0;

    // Draws the damaged parts of the canvas anew: disjoint, not empty, within the target, in pixels
    // from its top left, and each what changed of the scene already grown by the reach. The scene
    // has been asked for on the Connection, so it is there for whatever is asked for on it from now
    // on; a renderer with a connection of its own has to make sure (Connection::whenReplied).
    // Pixels outside the damage may be drawn as well, if they come out as they were. The canvas
    // picture is clipped to the damage or less (for one that draws in place, to exactly what of the
    // scene is new).
    //
    // Calls the function once, perhaps before returning, when requests made on the Connection after
    // that find the damaged parts in the canvas; with false when this renderer can't draw any more
    // (its owner then replaces it, see BackdropRenderers). A further render() before that ends this
    // one without its function being called, and includes its damage.
    virtual void render(const std::vector<drawing::PixelRect> &damage,
                        std::function<void(bool succeeded)> done) = 0;

    // Ends an unfinished render() without its function being called.
    virtual void cancel() = 0;
};

} // namespace lumo::x11
