#pragma once

#include "drawing/PlacedLayers.h"
#include "drawing/Region.h"

#include <cstdint>

namespace lumo::drawing {

// Draws the layers of an overlay but the backdrop layers, blended among themselves over nothing,
// with the alpha of all but without the mask. Replaces the pixels within the part alone, which is
// in pixels of the overlay's window. The pixels are as many as the appearance's area has, one word
// each with alpha in the highest byte, then red, green and blue, premultiplied, in rows from the
// top without padding. Any thread.
void drawPlainLayers(const PlacedLayers &appearance, const Region &part, std::uint32_t *pixels);

// Makes the part transparent, in pixels as above that are so many in a row.
void clear(const Region &part, int width, int height, std::uint32_t *pixels);

} // namespace lumo::drawing
