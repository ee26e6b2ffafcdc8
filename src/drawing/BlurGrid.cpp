#include "drawing/BlurGrid.h"

#include <cmath>

namespace lumo::drawing {

namespace {

// In texels. With less, linear interpolation between the texels would show.
constexpr double leastDeviation = 2.5;

} // namespace

BlurGrid blurGrid(double deviation) {
    BlurGrid grid;
    while (deviation / (2 * grid.factor) >= leastDeviation) {
        grid.factor *= 2;
    }
    // The variances of a block's mean and of linear interpolation between texels.
    const double side = grid.factor;
    const double mean = (side * side - 1) / 12;
    const double interpolation = side > 1 ? side * side / 6 : 0;
    grid.deviation = std::sqrt(deviation * deviation - mean - interpolation) / side;
    grid.radius = static_cast<int>(std::ceil(3 * grid.deviation));
    return grid;
}

} // namespace lumo::drawing
