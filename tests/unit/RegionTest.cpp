#include "drawing/Region.h"

#include "drawing/PlacedLayers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

namespace lumo::drawing {
namespace {

constexpr int side = 24;

class RandomRectangles {
  public:
    std::vector<PixelRect> next() {
        std::vector<PixelRect> result(std::uniform_int_distribution<std::size_t>(0, 6)(random_));
        for (auto &rect : result) {
            rect = {start_(random_), start_(random_), extent_(random_), extent_(random_)};
        }
        return result;
    }

  private:
    std::mt19937 random_{7};
    std::uniform_int_distribution<int> start_{-2, side - 6};
    std::uniform_int_distribution<int> extent_{-1, 8}; // empty and negative ones among them
};

TEST(Region, GrowsToAllSides) {
    const Region corner(std::vector<PixelRect>{{4, 4, 6, 2}, {4, 6, 2, 4}});
    EXPECT_EQ(corner.grown(3), Region(std::vector<PixelRect>{{1, 1, 12, 8}, {1, 3, 8, 10}}));
}

TEST(Region, BoxesAreFewAndDisjointAndContainIt) {
    RandomRectangles random;
    for (int round = 0; round < 300; ++round) {
        const Region region(random.next());
        const auto boxes = region.boxes();
        EXPECT_TRUE((region - Region(boxes)).isEmpty());
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                EXPECT_TRUE(boxes[i].intersection(boxes[j]).isEmpty());
            }
        }
    }
    // Two that lie at different heights are two, though pixman keeps them as three or more.
    const std::vector<PixelRect> apart = {{0, 0, 10, 10}, {20, 5, 10, 10}};
    EXPECT_EQ(Region(apart).boxes(), apart);
    std::vector<PixelRect> dots;
    for (int i = 0; i < 17; ++i) {
        dots.push_back({3 * i, 0, 1, 1});
    }
    EXPECT_EQ(Region(dots).boxes(), (std::vector<PixelRect>{{0, 0, 49, 1}}));
    dots.pop_back();
    EXPECT_EQ(Region(dots).boxes(), dots);
}

TEST(Region, MaskLeavesOutWhatLiesInAnEvenNumberOfItsRectangles) {
    PlacedLayers layers;
    layers.area = {100, 50, 40, 20};
    layers.space = PointSpace({layers.area}, 2);
    layers.frame = layers.space.screenFrame(layers.area);
    layers.tree.bounds = {0, 0, 20, 10};
    EXPECT_TRUE(layers.maskedOut().isEmpty());
    // All of it without a window at the bottom left of 5 by 4 points.
    layers.tree.mask = EvenOddMask{{0, 0, 20, 10}, {{0, 0, 20, 10}, {0, 0, 5, 4}}};
    EXPECT_EQ(layers.maskedOut(), Region(PixelRect{0, 12, 10, 8}));
    layers.tree.mask->rectangles.clear();
    EXPECT_EQ(layers.maskedOut(), Region(PixelRect{0, 0, 40, 20}));
}

} // namespace
} // namespace lumo::drawing
