#pragma once

#include "drawing/BackdropFilters.h"
#include "drawing/PlacedLayers.h"

#include <memory>
#include <optional>
#include <vector>

namespace lumo::drawing {

// One layer that contributes to the picture.
struct GlLayer {
    PixelRect frame; // in pixels from the overlay's top left
    double opacity = 1;
    BlendMode blend = BlendMode::normal;

    std::optional<BackdropFilters> backdrop; // of a backdrop layer, which has nothing else
    Color color;                             // not premultiplied
    std::shared_ptr<const Image> image;      // over the colour
    Sampling sampling = Sampling::linear;
};

// What is to be drawn over the scene beneath an overlay: a value that threads may hand each other.
struct GlLayers {
    std::vector<GlLayer> layers;
    Region maskedOut; // where the scene is as it was, from the overlay's top left
    double alpha = 1;
};

// The most layers that can be drawn at once.
inline constexpr std::size_t mostGlLayers = 8;

// The layers of an overlay; absent when there are too many.
std::optional<GlLayers> glLayers(const PlacedLayers &appearance);

} // namespace lumo::drawing
