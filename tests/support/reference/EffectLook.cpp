#include "reference/EffectLook.h"

#include "reference/Grain.h"

#include <utility>

namespace lumo::reference {

namespace {

Layer backdropLayer(const Rect &frame, double radius, double scale, double brightness,
                    double saturation, double contrast) {
    Layer layer = blurLayer(frame, radius, scale);
    layer.filters.push_back({Filter::Type::brightness, brightness});
    layer.filters.push_back({Filter::Type::saturation, saturation});
    layer.filters.push_back({Filter::Type::contrast, contrast});
    return layer;
}

} // namespace

Layer blurLayer(const Rect &frame, double radius, double scale) {
    Layer layer;
    layer.kind = Layer::Kind::backdrop;
    layer.frame = frame;
    layer.backdropScale = scale;
    layer.filters = {{Filter::Type::gaussianBlur, radius}};
    return layer;
}

LayerTree EffectLook::tree(int width, int height, double scale,
                           std::shared_ptr<const Image> grain) const {
    const double t = intensity;
    const bool blurs = effectMode == "softBlur" && !blurFreeMode;
    const bool tints = effectMode == "tint";
    LayerTree tree;
    tree.bounds = {0, 0, width / scale, height / scale};
    if (blurs && liveBackdrop) {
        tree.layers.push_back(backdropLayer(tree.bounds, 24 + 10 * t, scale, -0.02 - 0.012 * t,
                                            1.2 + 0.14 * t, 1.015 + 0.03 * t));
        Layer structure =
            backdropLayer(tree.bounds, 7 + 5 * t, scale, -0.018, 1.08, 1.2 + 0.08 * t);
        structure.opacity = static_cast<float>(0.095 + 0.045 * t);
        structure.blendMode = BlendMode::softLight;
        tree.layers.push_back(std::move(structure));
    }
    Layer grainLayer;
    grainLayer.frame = tree.bounds;
    grainLayer.opacity = static_cast<float>(blurs ? 0.235 + 0.105 * t : 0.16 + 0.08 * t);
    grainLayer.blendMode = BlendMode::overlay;
    grainLayer.minificationFilter = grainLayer.magnificationFilter = Sampling::nearest;
    grainLayer.contentsScale = scale;
    grainLayer.contents = std::move(grain);
    tree.layers.push_back(std::move(grainLayer));
    Layer tint;
    tint.frame = tree.bounds;
    tint.backgroundColor = tints ? Color{0.3, 0.48, 0.9, 1} : Color::black();
    tint.opacity = static_cast<float>(blurs ? 0 : (tints ? 0.1 + 0.3 * t : 0.12 + 0.4 * t));
    tree.layers.push_back(std::move(tint));
    return tree;
}

LayerTree EffectLook::tree(int width, int height, double scale) const {
    return tree(width, height, scale, grainImage(width, height));
}

} // namespace lumo::reference
