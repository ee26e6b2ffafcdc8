#pragma once

#include "platform/LayerTree.h"

#include <vector>

namespace lumo::macos {

// What is to be set on one layer.
struct LayerChange {
    bool isNew = false; // the layer is to be made first; everything is to be set on it then
    bool frame = false;
    bool opacity = false;
    bool backgroundColor = false;
    bool masksToBounds = false;
    bool contents = false;
    bool contentsScale = false;
    bool samplingFilters = false;
    bool blendMode = false;
    bool filters = false;       // never set to an empty list: the layer keeps what it has
    bool backdropScale = false; // of a new layer all settings of a backdrop

    bool any() const;

    bool operator==(const LayerChange &) const = default;
};

enum class MaskChange { none, remove, set };

// What turns one layer tree into another.
struct LayerTreeChange {
    bool bounds = false;
    bool viewAlpha = false;
    MaskChange mask = MaskChange::none;
    // One for each layer of the new tree, from the bottom. What the old tree has beyond is removed.
    std::vector<LayerChange> layers = {};
    bool removesLayers = false;

    bool any() const;
};

// Layers correspond by their place in the tree; one of another kind is made anew. Before the first
// tree there is a null pointer, for which everything is new.
LayerTreeChange difference(const LayerTree *before, const LayerTree &after);

} // namespace lumo::macos
