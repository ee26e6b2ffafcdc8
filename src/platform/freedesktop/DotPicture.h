#pragma once

#include "platform/LayerTree.h"
#include "platform/StatusItem.h"

namespace lumo::freedesktop {

// A square picture of the status item's dot, its side in pixels: a disc of the title's colour with
// a thin rim that sets it off from a panel of the same colour.
Image dotPicture(const StatusTitle &title, int side);

} // namespace lumo::freedesktop
