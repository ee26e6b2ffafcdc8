#pragma once

#include "drawing/PixelRect.h"
#include "support/Geometry.h"

#include <vector>

namespace lumo::drawing {

// Converts between pixels and the two point systems, which have one scale on all screens:
//
//   window bounds  x from the left of the root window, y down from the highest edge of all screens;
//   screen frames  x from the left of the root window, y up from the bottom edge of the main
//   screen.
//
// So with top as the largest maxY of all screens' frames, a window's frame y is
// top - bounds.y - bounds.height, wherever the screens lie on the root window.
class PointSpace {
  public:
    // Of one pixel per point with everything at the root window's top left, as while no screen is
    // connected.
    PointSpace() = default;

    // Of these screens, the main one first. The scale is in pixels per point and above 0.
    PointSpace(const std::vector<PixelRect> &screens, double scale);

    // Pixels per point.
    double scale() const { return scale_; }

    Rect windowBounds(const PixelRect &pixels) const;
    Rect screenFrame(const PixelRect &pixels) const;

    // The nearest pixels: each edge is rounded by itself, so that rectangles that touch in points
    // touch in pixels. What came from pixels comes back unchanged.
    PixelRect pixelsOfBounds(const Rect &bounds) const;
    PixelRect pixelsOfFrame(const Rect &frame) const;

    bool operator==(const PointSpace &) const = default;

  private:
    int highestEdge_ = 0; // pixels from the root's top to the highest screen edge
    int mainBottom_ = 0;  // pixels from the root's top to the main screen's bottom edge
    double scale_ = 1;
};

} // namespace lumo::drawing
