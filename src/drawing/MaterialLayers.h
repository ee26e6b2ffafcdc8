#pragma once

#include "drawing/MaterialRenderer.h"
#include "drawing/PlacedLayers.h"

#include <memory>
#include <vector>

namespace lumo::drawing {

// The layers of an overlay as one material, as far as they can be. Backdrop layers count as filling
// the view.
struct MaterialLayers {
    Material material;         // without backdrops when no backdrop layer shows
    std::vector<Layer> others; // to be drawn over it one by one, from the bottom to the top
};

// Turns grain images into what the material wants, and keeps those that are in use. Main thread
// only.
class GrainPlanes {
  public:
    // The image's grey values at that size, the nearest one for each pixel; null when it is not
    // grey, not opaque or not whole.
    std::shared_ptr<const GrainPlane> find(const std::shared_ptr<const Image> &image, int width,
                                           int height);

  private:
    struct Entry {
        std::weak_ptr<const Image> image;
        std::weak_ptr<const GrainPlane> plane;
    };

    std::vector<Entry> entries_;
};

MaterialLayers materialLayers(const PlacedLayers &appearance, GrainPlanes &planes);

} // namespace lumo::drawing
