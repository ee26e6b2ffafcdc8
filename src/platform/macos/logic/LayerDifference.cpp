#include "platform/macos/logic/LayerDifference.h"

#include <algorithm>

namespace lumo::macos {

namespace {

LayerChange newLayer(const Layer &layer) {
    return {.isNew = true,
            .frame = true,
            .opacity = true,
            .backgroundColor = true,
            .masksToBounds = true,
            .contents = true,
            .contentsScale = true,
            .samplingFilters = true,
            .blendMode = true,
            .filters = !layer.filters.empty(),
            .backdropScale = layer.kind == Layer::Kind::backdrop};
}

LayerChange layerDifference(const Layer &before, const Layer &after) {
    if (before.kind != after.kind) {
        return newLayer(after);
    }
    return {.isNew = false,
            .frame = before.frame != after.frame,
            .opacity = before.opacity != after.opacity,
            .backgroundColor = before.backgroundColor != after.backgroundColor,
            .masksToBounds = before.masksToBounds != after.masksToBounds,
            .contents = before.contents != after.contents,
            .contentsScale = before.contentsScale != after.contentsScale,
            .samplingFilters = before.minificationFilter != after.minificationFilter ||
                               before.magnificationFilter != after.magnificationFilter,
            .blendMode = before.blendMode != after.blendMode,
            .filters = !after.filters.empty() && before.filters != after.filters,
            .backdropScale = before.backdropScale != after.backdropScale};
}

MaskChange maskDifference(const LayerTree *before, const LayerTree &after) {
    const bool hadMask = before != nullptr && before->mask.has_value();
    if (!after.mask) {
        return hadMask ? MaskChange::remove : MaskChange::none;
    }
    return hadMask && before->mask == after.mask ? MaskChange::none : MaskChange::set;
}

} // namespace

bool LayerChange::any() const {
    return *this != LayerChange{};
}

bool LayerTreeChange::any() const {
    return bounds || viewAlpha || mask != MaskChange::none || removesLayers ||
           std::ranges::any_of(layers, &LayerChange::any);
}

LayerTreeChange difference(const LayerTree *before, const LayerTree &after) {
    LayerTreeChange change{.bounds = before == nullptr || before->bounds != after.bounds,
                           .viewAlpha = before == nullptr || before->viewAlpha != after.viewAlpha,
                           .mask = maskDifference(before, after),
                           .layers = {},
                           .removesLayers =
                               before != nullptr && before->layers.size() > after.layers.size()};
    change.layers.reserve(after.layers.size());
    for (std::size_t index = 0; index < after.layers.size(); ++index) {
        const bool isKnown = before != nullptr && index < before->layers.size();
        change.layers.push_back(isKnown
                                    ? layerDifference(before->layers[index], after.layers[index])
                                    : newLayer(after.layers[index]));
    }
    return change;
}

} // namespace lumo::macos
