#include "drawing/BlurGrid.h"
#include "drawing/MaterialRenderer.h"
#include "drawing/Region.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <random>
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

TEST(BlurGrid, BlursAsWideAsAskedForAtACostThatDoesNotGrow) {
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

constexpr int width = 230;
constexpr int height = 170;

// A downsampled scene, four bytes per texel.
class Scene {
  public:
    explicit Scene(const MaterialRenderer &renderer)
        : renderer_(renderer)
        , whole_(renderer.texelsFor({0, 0, width, height}))
        , bytes_(4 * static_cast<std::size_t>(whole_.width) *
                 static_cast<std::size_t>(whole_.height)) {}

    std::vector<std::uint8_t> &bytes() { return bytes_; }
    const PixelRect &whole() const { return whole_; }
    std::size_t stride() const { return 4 * static_cast<std::size_t>(whole_.width); }

    // Draws the part into a picture of the whole view.
    void render(const PixelRect &part, std::vector<std::uint8_t> &picture) const {
        const auto texels = renderer_.texelsFor(part);
        const auto *from = bytes_.data() + static_cast<std::size_t>(texels.y) * stride() +
                           4 * static_cast<std::size_t>(texels.x);
        auto *to = picture.data() + 4 * (static_cast<std::size_t>(part.y) * width +
                                         static_cast<std::size_t>(part.x));
        renderer_.render(part, from, stride(), to, 4 * std::size_t{width});
    }

    std::vector<std::uint8_t> picture() const {
        std::vector<std::uint8_t> result(4 * std::size_t{width} * height);
        render({0, 0, width, height}, result);
        return result;
    }

  private:
    const MaterialRenderer &renderer_;
    PixelRect whole_;
    std::vector<std::uint8_t> bytes_;
};

Material blurOf(double deviation) {
    Material material;
    material.backdrops.emplace_back().deviation = deviation;
    return material;
}

int farthest(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b) {
    return std::transform_reduce(
        a.begin(), a.end(), b.begin(), 0, [](int x, int y) { return std::max(x, y); },
        [](int x, int y) { return std::abs(x - y); });
}

TEST(MaterialRenderer, DrawsTheSamePictureHoweverItIsDivided) {
    for (const double deviation : {0.0, 2.0, 9.0, 34.0}) {
        const MaterialRenderer renderer(width, height, blurOf(deviation));
        Scene scene(renderer);
        std::mt19937 random{3};
        std::ranges::generate(scene.bytes(), [&] { return static_cast<std::uint8_t>(random()); });
        const auto whole = scene.picture();
        std::vector<std::uint8_t> divided(whole.size());
        for (const auto &part :
             {PixelRect{0, 0, 101, 63}, PixelRect{101, 0, width - 101, 63},
              PixelRect{0, 63, 7, height - 63}, PixelRect{7, 63, width - 7, height - 63}}) {
            scene.render(part, divided);
        }
        EXPECT_LE(farthest(whole, divided), 1) << deviation;
    }
}

TEST(MaterialRenderer, KeepsAnEvenSceneEvenUpToTheEdges) {
    for (const double deviation : {0.0, 3.0, 34.0}) {
        const MaterialRenderer renderer(width, height, blurOf(deviation));
        Scene scene(renderer);
        const int size = renderer.texelSize();
        // Of a texel that reaches beyond the view, what lies outside is black.
        const auto inside = [size](int texel, int pixels) {
            return std::min(size, pixels - texel * size) / static_cast<double>(size);
        };
        for (int y = 0; y < scene.whole().height; ++y) {
            for (int x = 0; x < scene.whole().width; ++x) {
                const auto value = static_cast<std::uint8_t>(
                    std::lround(200 * inside(x, width) * inside(y, height)));
                std::fill_n(
                    scene.bytes().begin() +
                        static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * scene.stride() +
                                                    4 * static_cast<std::size_t>(x)),
                    4, value);
            }
        }
        const auto picture = scene.picture();
        for (std::size_t at = 0; at < picture.size(); at += 4) {
            ASSERT_NEAR(picture[at], 200, 1)
                << deviation << " at " << at / 4 % width << ", " << at / 4 / width;
            ASSERT_EQ(picture[at + 3], 255);
        }
    }
}

TEST(MaterialRenderer, SpreadsAChangeNoFurtherThanItsReach) {
    for (const double deviation : {2.0, 9.0, 20.0}) {
        const MaterialRenderer renderer(width, height, blurOf(deviation));
        Scene scene(renderer);
        const auto before = scene.picture();
        const int size = renderer.texelSize();
        const int x = 100 / size;
        const int y = 80 / size;
        std::fill_n(scene.bytes().begin() +
                        static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * scene.stride() +
                                                    4 * static_cast<std::size_t>(x)),
                    4, std::uint8_t{255});
        const auto after = scene.picture();
        const auto changed = Region(PixelRect{x * size, y * size, size, size});
        const auto near = changed.grown(renderer.reach());
        int seen = 0;
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                const auto at =
                    4 * (static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column));
                const int change = std::abs(after[at] - before[at]);
                seen = std::max(seen, change);
                if (!near.overlaps({column, row, 1, 1})) {
                    ASSERT_LE(change, 1) << deviation << " at " << column << ", " << row;
                }
            }
        }
        EXPECT_GE(seen, 1);
    }
}

} // namespace
} // namespace lumo::drawing
