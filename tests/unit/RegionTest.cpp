#include "drawing/Region.h"

#include "drawing/PlacedLayers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <vector>

namespace lumo::drawing {
namespace {

constexpr int side = 24;

using Pixels = std::array<std::array<int, side>, side>;

// In how many of the rectangles each pixel lies.
Pixels count(const std::vector<PixelRect> &rectangles) {
    Pixels pixels{};
    for (const auto &rect : rectangles) {
        for (int y = std::max(rect.y, 0); y < std::min(rect.maxY(), side); ++y) {
            for (int x = std::max(rect.x, 0); x < std::min(rect.maxX(), side); ++x) {
                ++pixels.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x));
            }
        }
    }
    return pixels;
}

// The pixels for which the function of their counts is true.
template <typename Function>
Pixels where(const Pixels &a, const Pixels &b, Function isIn) {
    Pixels result{};
    for (std::size_t y = 0; y < side; ++y) {
        for (std::size_t x = 0; x < side; ++x) {
            result.at(y).at(x) = isIn(a.at(y).at(x), b.at(y).at(x)) ? 1 : 0;
        }
    }
    return result;
}

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

TEST(Region, HoldsThePixelsThatCountingFinds) {
    RandomRectangles random;
    const Region all(PixelRect{0, 0, side, side});
    for (int round = 0; round < 300; ++round) {
        const auto some = random.next();
        const auto others = random.next();
        const Region a = Region(some) & all;
        const Region b = Region(others) & all;
        const auto inA = count(some);
        const auto inB = count(others);
        const auto is = [&](const Region &region, auto isIn) {
            return count(region.rectangles()) == where(inA, inB, isIn);
        };
        EXPECT_TRUE(is(a | b, [](int x, int y) { return x > 0 || y > 0; }));
        EXPECT_TRUE(is(a & b, [](int x, int y) { return x > 0 && y > 0; }));
        EXPECT_TRUE(is(a - b, [](int x, int y) { return x > 0 && y == 0; }));
        EXPECT_TRUE(is(evenOdd(some) & all, [](int x, int) { return x % 2 == 1; }));
        EXPECT_EQ(a.isEmpty(), count({}) == where(inA, inB, [](int x, int) { return x > 0; }));
        for (const auto &rect : others) {
            EXPECT_EQ(a.overlaps(rect), !(a & rect).isEmpty());
        }
        EXPECT_EQ((a - b).translated(3, -5).translated(-3, 5), a - b);
    }
}

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
