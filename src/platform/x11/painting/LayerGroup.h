#pragma once

#include "platform/x11/painting/Painter.h"
#include "platform/x11/server/ServerImages.h"
#include "platform/x11/server/ServerResource.h"

#include <memory>
#include <vector>

namespace lumo::x11 {

class Connection;
class RenderFormats;

// What drawing needs; all of it outlives the objects that are handed it.
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
LayerGroup drawLayers(const DrawingTools &tools, const drawing::PlacedLayers &appearance);

// Draws these layers one by one onto a picture of the window's size, which is opaque; no backdrop
// layers, mask or alpha. What was drawn from must stay until there is nothing to be drawn from it.
std::vector<std::shared_ptr<const ServerImage>>
drawLayersOnto(xcb_render_picture_t picture, const DrawingTools &tools,
               const drawing::PlacedLayers &appearance, const std::vector<Layer> &layers);

} // namespace lumo::x11
