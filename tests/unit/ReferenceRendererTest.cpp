#include "reference/ReferenceRenderer.h"

#include "reference/Blending.h"
#include "reference/EffectLook.h"
#include "reference/Filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

namespace lumo::reference {
namespace {

using desktop::Colour;
using desktop::Picture;

// The numbers here are worked out by hand.

TEST(ReferenceRenderer, BlursWithNormalisedWeights) {
    Raster spot(9, 1);
    spot.at(4, 0) = {1, 0.5, 0, 1};
    const Raster blurred = gaussianBlur(spot, 0.5, true);
    // exp(-2) to each side, exp(-8) beyond.
    const double all = 1 + 2 * (std::exp(-2) + std::exp(-8));
    EXPECT_NEAR(blurred.at(4, 0).red, 1 / all, 1e-7);
    EXPECT_NEAR(blurred.at(3, 0).green, 0.5 * std::exp(-2) / all, 1e-7);
    EXPECT_NEAR(blurred.at(6, 0).alpha, std::exp(-8) / all, 1e-7);

    Raster edge(40, 30);
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            edge.at(x, y) = {0.25, 0.5, 1, 1};
        }
    }
    const Pixel corner = gaussianBlur(edge, 3, true).at(0, 29);
    EXPECT_NEAR(corner.red, 0.25, 1e-12);
    EXPECT_NEAR(corner.alpha, 1, 1e-12);
    // Half of a Gaussian and half of its middle weight, in both directions.
    const double middle = 1 / (3 * std::sqrt(2 * std::acos(-1)));
    EXPECT_NEAR(gaussianBlur(edge, 3, false).at(0, 29).alpha, std::pow(0.5 + middle / 2, 2), 1e-6);
}

TEST(ReferenceRenderer, ChangesColours) {
    const auto expectNear = [](const Pixel &pixel, double red, double green, double blue) {
        EXPECT_NEAR(pixel.red, red, 1e-12);
        EXPECT_NEAR(pixel.green, green, 1e-12);
        EXPECT_NEAR(pixel.blue, blue, 1e-12);
    };
    expectNear(colorBrightness({0.5, 0.25, 0.75, 1}, -0.02), 0.48, 0.23, 0.73);
    expectNear(colorSaturate({1, 0, 0, 1}, 1.5), 1.3937, -0.1063, -0.1063);
    expectNear(colorSaturate({0.2, 0.6, 1, 1}, 0), 0.54384, 0.54384, 0.54384);
    expectNear(colorContrast({0.75, 0.5, 0, 1}, 1.2), 0.8, 0.5, -0.1);
    expectNear(colorContrast({0.4, 0.2, 0, 0.5}, 2), 0.55, 0.15, -0.25);
}

TEST(ReferenceRenderer, BlendsWithTheBackdropsAlpha) {
    struct Case {
        std::string filter;
        Pixel backdrop;
        Pixel source;
        double red = 0;
        double alpha = 0;
    };
    const auto grey = [](double value, double alpha) {
        return Pixel{value * alpha, value * alpha, value * alpha, alpha};
    };
    for (const auto &[filter, backdrop, source, red, alpha] :
         {Case{"", grey(0.5, 1), grey(1, 0.25), 0.625, 1},
          Case{"overlayBlendMode", grey(0.25, 1), grey(0.75, 1), 0.375, 1},
          Case{"overlayBlendMode", grey(0.75, 1), grey(0.25, 1), 0.625, 1},
          Case{"overlayBlendMode", {}, grey(0.75, 0.5), 0.375, 0.5},
          Case{"overlayBlendMode", grey(0.25, 0.5), grey(0.75, 0.5), 0.34375, 0.75},
          Case{"softLightBlendMode", grey(0.5, 1), grey(0.25, 1), 0.375, 1},
          Case{"softLightBlendMode", grey(0.25, 1), grey(0.75, 1), 0.375, 1},
          Case{"softLightBlendMode", grey(0.64, 1), grey(1, 0.5), 0.72, 1},
          Case{"softLightBlendMode", {}, grey(1, 0.5), 0.5, 0.5}}) {
        const Pixel result = blended(backdrop, source, filter);
        EXPECT_NEAR(result.red, red, 1e-12) << filter;
        EXPECT_NEAR(result.alpha, alpha, 1e-12) << filter;
    }
}

TEST(ReferenceRenderer, DrawsLayersMaskAndAlphas) {
    Picture beneath(4, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            beneath.at(x, y) = {200, 100, static_cast<std::uint8_t>(10 * y)};
        }
    }
    // Two pixels per point, the origin at the bottom left.
    LayerTree tree;
    tree.bounds = {0, 0, 2, 2};
    Layer plane;
    plane.frame = {0, 1, 2, 1};
    plane.backgroundColor = {1, 0, 0, 0.5};
    plane.opacity = 0.5;
    tree.layers = {plane};
    tree.mask = EvenOddMask{tree.bounds, {tree.bounds, {0, 0, 1, 2}, {0.5, 1.5, 0.5, 0.5}}};
    tree.viewAlpha = 0.8;
    const Picture shown = render(beneath, tree, 2, 0.5);
    EXPECT_EQ(shown.at(0, 0), beneath.at(0, 0)) << "in a hole";
    EXPECT_EQ(shown.at(3, 3), beneath.at(3, 3)) << "under no layer";
    const Colour covered{206, 90, 0}; // an alpha of 0.1
    EXPECT_EQ(shown.at(3, 0), covered);
    EXPECT_EQ(shown.at(1, 0), covered) << "where two holes meet";

    // One colour all over stays one colour: 0.6, 0.4, 0.2, less 0.02, its distance from the luma of
    // 0.428 - 0.02 by 1.2, then from one half by 1.015; over it at 0.095 soft light with 0.6, 0.4,
    // 0.2, changed in the same way by 0.018, 1.08 and 1.2; over it at 0.235 grain of 64.
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            beneath.at(x, y) = {153, 102, 51};
        }
    }
    const EffectLook look{.effectMode = "softBlur", .liveBackdrop = true};
    const auto grain = std::make_shared<const Image>(Image{1, 1, {64, 64, 64, 255}});
    EXPECT_EQ(render(beneath, look.tree(4, 4, 1, grain), 1).at(1, 2), (Colour{147, 82, 27}));
}

} // namespace
} // namespace lumo::reference
