#pragma once

#include "platform/x11/Painter.h"
#include "platform/x11/ServerImages.h"
#include "platform/x11/ServerResource.h"

#include <memory>
#include <vector>

namespace lumo::x11 {

class Connection;
class RenderFormats;

// What drawing needs; all of it outlives whoever is handed it.
struct DrawingTools {
    Connection &connection;
    const RenderFormats &formats;
    ServerImages &images;
};

// The layers of an overlay, blended among themselves over nothing, mask and alpha applied: a
// picture of the window's size, 32 bits deep and premultiplied.
struct LayerGroup {
    OwnedPixmap pixmap;
    OwnedPicture picture;

    // What was drawn from, so that the next drawing finds it in the server.
    std::vector<std::shared_ptr<const ServerImage>> images;
};

// Draws all but the backdrop layers.
LayerGroup drawLayers(const DrawingTools &tools, const Appearance &appearance);

// Draws these layers one by one onto a picture of the window's size, which is opaque; no backdrop
// layers, mask or alpha. What was drawn from must stay until there is nothing to be drawn from it.
std::vector<std::shared_ptr<const ServerImage>> drawLayersOnto(xcb_render_picture_t picture,
                                                               const DrawingTools &tools,
                                                               const Appearance &appearance,
                                                               const std::vector<Layer> &layers);

// What the mask hides of the appearance's window, in its pixels, as disjoint rectangles.
std::vector<PixelRect> hiddenParts(const Appearance &appearance);

// The parts of a canvas that lie in an even number of the rectangles, as disjoint rectangles. All
// of it when there are none.
std::vector<PixelRect> evenParts(int width, int height, const std::vector<PixelRect> &rectangles);

} // namespace lumo::x11
