#pragma once

#include "platform/LayerTree.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lumo::drawing {

// A share from 0 to 1 in sixteen bits, rounded to the steps of eight bits that pixels have in the
// end: what is finer would be cut off.
inline std::uint16_t channel(double share) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255) * 257);
}

// In a library's own structure of red, green, blue and alpha.
template <class NativeColor>
NativeColor premultiplied(const Color &color, double opacity) {
    const double alpha = color.alpha * opacity;
    return {channel(color.red * alpha), channel(color.green * alpha), channel(color.blue * alpha),
            channel(alpha)};
}

} // namespace lumo::drawing
