#pragma once

#include "desktop/Picture.h"
#include "platform/LayerTree.h"

namespace lumo::reference {

// How a display must look with an overlay all over it that shows the tree, given what lies beneath
// the overlay, at that many pixels per point: in double precision, rounded once at the end.
desktop::Picture render(const desktop::Picture &beneath, const LayerTree &tree, double scale,
                        double windowAlpha = 1);

} // namespace lumo::reference
