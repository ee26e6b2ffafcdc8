#include "drawing/BlurGrid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace lumo::drawing {
namespace {

// The variance of what one bright pixel becomes in one dimension: block means, a Gaussian cut off
// at the kernel's radius, and linear interpolation between the texels' centres.
double varianceOfOnePixel(const BlurGrid &grid, int pixel, int count) {
    std::vector<double> texels(static_cast<std::size_t>(count / grid.factor));
    const int texel = pixel / grid.factor;
    double all = 0;
    for (int k = -grid.radius; k <= grid.radius; ++k) {
        const double weight = std::exp(-0.5 * k * k / (grid.deviation * grid.deviation));
        texels.at(static_cast<std::size_t>(texel + k)) = weight;
        all += weight;
    }
    double sum = 0;
    double variance = 0;
    for (int x = grid.factor; x < count - grid.factor; ++x) {
        const double at = (x + 0.5) / grid.factor - 0.5;
        const auto left = static_cast<std::size_t>(at);
        const double share = at - static_cast<double>(left);
        const double value = (texels[left] * (1 - share) + texels[left + 1] * share) / all;
        sum += value;
        variance += value * (x - pixel) * (x - pixel);
    }
    return variance / sum;
}

TEST(BlurGrid, DeviationAsWantedWithBoundedRadius) {
    for (double deviation = 0.6; deviation < 150; deviation *= 1.3) {
        const auto grid = blurGrid(deviation);
        const int count = 2048 / grid.factor * grid.factor;
        double variance = 0;
        for (int i = 0; i < grid.factor; ++i) {
            variance += varianceOfOnePixel(grid, count / 2 + i, count) / grid.factor;
        }
        // A Gaussian that is cut off at three deviations is a little narrower.
        EXPECT_GT(std::sqrt(variance) / deviation, 0.985) << deviation;
        EXPECT_LT(std::sqrt(variance) / deviation, 1.002) << deviation;
        EXPECT_LE(grid.radius, 16) << deviation;
        EXPECT_GE(grid.reach(), 3 * deviation) << deviation;
    }
}

} // namespace
} // namespace lumo::drawing
