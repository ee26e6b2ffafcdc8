#include "platform/LayerTree.h"

#include <algorithm>

namespace lumo {

bool showsBackdrop(const LayerTree &tree) {
    return tree.viewAlpha > 0 && std::ranges::any_of(tree.layers, [](const Layer &layer) {
               return layer.kind == Layer::Kind::backdrop && layer.opacity > 0;
           });
}

} // namespace lumo
