#pragma once

#include "platform/LayerTree.h"
#include "reference/Raster.h"

#include <vector>

namespace lumo::reference {

// Convolved with a Gaussian of that standard deviation in pixels, sampled at the pixels' centres.
// Beyond the edges lies nothing: either the weights that are left are made to add up to 1 again, or
// the result becomes translucent there.
Raster gaussianBlur(const Raster &raster, double deviation, bool normalizeEdges);

// One of the colour filters on an opaque or translucent pixel. The amount of a brightness is added
// to each channel, that of a saturation multiplies the distance from the luma of Recommendation
// 709, that of a contrast the distance from one half.
Pixel colorBrightness(const Pixel &pixel, double amount);
Pixel colorSaturate(const Pixel &pixel, double amount);
Pixel colorContrast(const Pixel &pixel, double amount);

// All filters in order, at that many pixels per point. Nothing is cut off on the way, at the end
// everything is that can't be shown.
Raster filtered(Raster raster, const std::vector<Filter> &filters, double scale);

} // namespace lumo::reference
