#pragma once

#include "platform/LayerTree.h"
#include "reference/Raster.h"

namespace lumo::reference {

// The source over the backdrop, blended with it by that mode as in the W3C's "Compositing and
// Blending Level 1".
Pixel blended(const Pixel &backdrop, const Pixel &source, BlendMode mode);

} // namespace lumo::reference
