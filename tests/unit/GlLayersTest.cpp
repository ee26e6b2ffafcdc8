#include "drawing/gl/GlLayers.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace lumo::drawing {
namespace {

PlacedLayers placed(std::vector<Layer> layers) {
    PlacedLayers result;
    result.area = {0, 0, 40, 20};
    result.frame = {0, 0, 40, 20};
    result.space = PointSpace({result.area}, 1);
    result.tree = {
        .bounds = {0, 0, 40, 20}, .viewAlpha = 1, .layers = std::move(layers), .mask = {}};
    return result;
}

TEST(GlLayers, LayersThatContribute) {
    Layer tint;
    tint.frame = {10, 5, 20, 10};
    tint.backgroundColor = Color::black();
    auto unseen = tint;
    unseen.opacity = 0;
    auto empty = tint;
    empty.frame.width = 0;
    auto colourless = tint;
    colourless.backgroundColor = Color::clear();
    auto corner = tint;
    corner.frame = {0, 0, 8, 4};
    auto torn = colourless;
    torn.contents = std::make_shared<Image>(Image{4, 4, Bytes(10)});
    Layer backdrop;
    backdrop.kind = Layer::Kind::backdrop;
    backdrop.frame = {0, 0, 40, 20};
    const auto layers =
        glLayers(placed({backdrop, unseen, empty, colourless, torn, corner, tint})).value().layers;
    ASSERT_EQ(layers.size(), 3U);
    EXPECT_TRUE(layers[0].backdrop);
    EXPECT_EQ(layers[1].frame, (PixelRect{0, 16, 8, 4}));
    EXPECT_EQ(layers[2].frame, (PixelRect{10, 5, 20, 10}));
    EXPECT_TRUE(glLayers(placed(std::vector(8, tint))));
    EXPECT_FALSE(glLayers(placed(std::vector(9, tint))));
}

} // namespace
} // namespace lumo::drawing
