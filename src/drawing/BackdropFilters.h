#pragma once

#include "platform/LayerTree.h"

#include <array>

namespace lumo::drawing {

// The filters of a backdrop layer as renderers apply them: a blur, then an affine change of the
// colours, then a cut to what can be shown. It is the same whatever the order of the filters, since
// a blur and an affine change may swap places.
struct BackdropFilters {
    // Each row is one channel of the result: the factors of red, green and blue, and what is added.
    using Matrix = std::array<std::array<double, 4>, 3>;

    double deviation = 0; // of the Gaussian, in pixels; 0 for no blur
    Matrix matrix = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

    bool operator==(const BackdropFilters &) const = default;
};

// Those of a backdrop layer, at its own scale.
BackdropFilters backdropFilters(const Layer &layer);

} // namespace lumo::drawing
