#include "drawing/gl/GlLayers.h"

#include <utility>

namespace lumo::drawing {

namespace {

bool hasPixels(const Image &image) {
    return image.width > 0 && image.height > 0 &&
           image.pixels.size() >= static_cast<std::size_t>(4) *
                                      static_cast<std::size_t>(image.width) *
                                      static_cast<std::size_t>(image.height);
}

GlLayer glLayer(const Layer &layer, const PlacedLayers &appearance) {
    GlLayer result;
    result.frame = appearance.toWindow(layer.frame);
    result.opacity = layer.opacity;
    result.blend = layer.blendMode;
    if (layer.kind == Layer::Kind::backdrop) {
        result.backdrop = backdropFilters(layer);
        return result;
    }
    result.color = layer.backgroundColor;
    if (layer.contents && hasPixels(*layer.contents)) {
        result.image = layer.contents;
        const bool shrinks =
            result.image->width > result.frame.width || result.image->height > result.frame.height;
        result.sampling = shrinks ? layer.minificationFilter : layer.magnificationFilter;
    }
    return result;
}

} // namespace

std::optional<GlLayers> glLayers(const PlacedLayers &appearance) {
    GlLayers result;
    result.alpha = appearance.alpha;
    for (const auto &layer : appearance.tree.layers) {
        auto drawn = glLayer(layer, appearance);
        if (drawn.opacity > 0 && !drawn.frame.isEmpty() &&
            (drawn.backdrop || drawn.image || drawn.color.alpha > 0)) {
            result.layers.push_back(std::move(drawn));
        }
    }
    if (result.layers.size() > mostGlLayers) {
        return std::nullopt;
    }
    result.maskedOut = appearance.maskedOut();
    return result;
}

} // namespace lumo::drawing
