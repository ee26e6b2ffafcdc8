#pragma once

#include "reference/Raster.h"

#include <string>

namespace lumo::reference {

// The source over the backdrop, blended with it by that compositing filter as in the W3C's
// "Compositing and Blending Level 1"; plain source-over for an empty name. Throws for one that is
// not known.
Pixel blended(const Pixel &backdrop, const Pixel &source, const std::string &compositingFilter);

} // namespace lumo::reference
