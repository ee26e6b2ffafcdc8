#pragma once

#include "drawing/PixelRect.h"
#include "drawing/PointSpace.h"
#include "drawing/Region.h"
#include "platform/LayerTree.h"

namespace lumo::drawing {

// A layer tree and the pixels that it is for: all that decides what one overlay shows, apart from
// what lies beneath it.
struct PlacedLayers {
    PixelRect area;   // the window's pixels on the root window
    Rect frame;       // the same in points, in the space of screen frames
    PointSpace space; // by which one became the other
    LayerTree tree;
    double alpha = 1; // the view's alpha times the window's

    // A rectangle in the view's coordinates as pixels of the window, origin at its top left, y
    // down. Edges that lie on the window's edges do so in pixels as well.
    PixelRect toWindow(const Rect &inView) const {
        const auto onRoot = space.pixelsOfFrame(
            inView.translated(frame.x - tree.bounds.x, frame.y - tree.bounds.y));
        return {onRoot.x - area.x, onRoot.y - area.y, onRoot.width, onRoot.height};
    }

    // The pixels of the window in which the mask shows no layer, origin at its top left.
    Region maskedOut() const;

    bool operator==(const PlacedLayers &) const = default;
};

} // namespace lumo::drawing
