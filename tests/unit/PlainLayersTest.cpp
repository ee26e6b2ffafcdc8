#include "drawing/PlainLayers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace lumo::drawing {
namespace {

constexpr PixelRect area = {0, 0, 24, 20};
constexpr std::uint32_t untouched = 0x12345678;

// A grey for each pixel, all 256 of them about twice.
std::shared_ptr<const Image> greys(Image::Format format) {
    auto image = std::make_shared<Image>(Image{area.width, area.height, {}, format});
    for (int pixel = 0; pixel < area.width * area.height; ++pixel) {
        const auto grey = static_cast<std::uint8_t>(pixel * 7);
        image->pixels.insert(image->pixels.end(), image->bytesPerPixel(), grey);
        if (format == Image::Format::rgba) {
            image->pixels.back() = 255;
        }
    }
    return image;
}

struct Stack {
    const char *name = "";
    Color below = Color::clear();
    Color onGrain = Color::clear();
    Color above = Color::clear();
    BlendMode blend = BlendMode::normal;
    float grainOpacity = 1;
    double alpha = 1;
};

std::vector<std::uint32_t> drawn(const Stack &stack, Image::Format format, const Region &part) {
    PlacedLayers layers;
    layers.area = area;
    layers.space = PointSpace({area}, 1);
    layers.frame = layers.space.screenFrame(area);
    layers.tree.bounds = layers.frame;
    layers.alpha = stack.alpha;
    for (const auto &color : {stack.below, stack.onGrain, stack.above}) {
        Layer layer;
        layer.frame = layers.frame;
        layer.backgroundColor = color;
        layers.tree.layers.push_back(layer);
    }
    auto &grain = layers.tree.layers[1];
    grain.contents = greys(format);
    grain.blendMode = stack.blend;
    grain.opacity = stack.grainOpacity;
    std::vector<std::uint32_t> pixels(std::size_t{area.width} * std::size_t{area.height},
                                      untouched);
    drawPlainLayers(layers, part, pixels.data());
    return pixels;
}

// Grey images are drawn in a quicker way than coloured ones.
TEST(PlainLayers, GreyImageLooksAsInColors) {
    const Color dim = {0, 0, 0, 0.6};
    const Color tint = {0.3, 0.6, 0.1, 0.5};
    const Region inside = {{3, 2, 17, 15}};
    const Region part = inside - PixelRect{5, 5, 4, 9};
    for (const auto &stack :
         {Stack{.name = "grain alone"},
          Stack{
              .name = "overlay", .below = dim, .blend = BlendMode::overlay, .grainOpacity = 0.19F},
          Stack{.name = "soft light", .below = tint, .blend = BlendMode::softLight},
          Stack{.name = "its own colour", .below = dim, .onGrain = tint, .grainOpacity = 0.5F},
          Stack{.name = "between", .below = tint, .above = dim, .grainOpacity = 0.4F},
          Stack{.name = "fading", .below = tint, .blend = BlendMode::overlay, .alpha = 0.37}}) {
        SCOPED_TRACE(stack.name);
        const auto grey = drawn(stack, Image::Format::grey, part);
        EXPECT_EQ(grey, drawn(stack, Image::Format::rgba, part));
        EXPECT_EQ(grey.front(), untouched);
        EXPECT_EQ(grey[std::size_t{6} * area.width + 6], untouched); // what is left out of the part
        EXPECT_NE(grey[std::size_t{6} * area.width + 4], untouched);
    }
    const auto covered = drawn({.name = "black", .below = dim, .above = Color::black()},
                               Image::Format::grey, inside);
    EXPECT_EQ(covered[std::size_t{6} * area.width + 6], 0xff000000);
}

} // namespace
} // namespace lumo::drawing
