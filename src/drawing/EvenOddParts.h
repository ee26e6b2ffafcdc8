#pragma once

#include "drawing/PixelRect.h"
#include "drawing/PlacedLayers.h"

#include <vector>

namespace lumo::drawing {

// What the mask hides of the appearance's window, in its pixels, as disjoint rectangles.
std::vector<PixelRect> hiddenParts(const PlacedLayers &appearance);

// The parts of a canvas that lie in an even number of the rectangles, as disjoint rectangles. All
// of it when there are none.
std::vector<PixelRect> evenParts(int width, int height, const std::vector<PixelRect> &rectangles);

} // namespace lumo::drawing
