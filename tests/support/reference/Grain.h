#pragma once

#include "platform/LayerTree.h"

#include <memory>

namespace lumo::reference {

// The grain of a display of that size in pixels: opaque greys.
std::shared_ptr<const Image> grainImage(int width, int height);

} // namespace lumo::reference
