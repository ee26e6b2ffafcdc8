#include "drawing/PointSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace lumo::drawing {
namespace {

// Two screens of which neither touches the top of the root window and the main one is not the
// highest.
const std::vector<PixelRect> screens = {{1920, 500, 1600, 900}, {0, 37, 1920, 1080}};

TEST(PointSpace, OriginsOfBoundsAndFrames) {
    const PointSpace space(screens, 2);
    EXPECT_EQ(space.screenFrame(screens[0]), (Rect{960, 0, 800, 450}));
    EXPECT_EQ(space.screenFrame(screens[1]), (Rect{0, 141.5, 960, 540}));
    EXPECT_EQ(space.windowBounds({100, 137, 400, 300}), (Rect{50, 50, 200, 150}));
    EXPECT_EQ(PointSpace({}, 1).windowBounds({10, 20, 30, 40}), (Rect{10, 20, 30, 40}));
}

TEST(PointSpace, BoundsAndFramesComeBackToTheSamePixels) {
    const auto seed = testing::UnitTest::GetInstance()->random_seed();
    SCOPED_TRACE(seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    std::uniform_int_distribution<int> position(-5000, 9000);
    std::uniform_int_distribution<int> extent(1, 6000);
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 2.75, 1.1}) {
        const PointSpace space(screens, scale);
        const double top =
            std::max(space.screenFrame(screens[0]).maxY(), space.screenFrame(screens[1]).maxY());
        for (int i = 0; i < 2000; ++i) {
            const PixelRect pixels{position(random), position(random), extent(random),
                                   extent(random)};
            const Rect bounds = space.windowBounds(pixels);
            const Rect frame = space.screenFrame(pixels);
            ASSERT_NEAR(frame.y, top - bounds.y - bounds.height, 1e-9);
            ASSERT_EQ(frame.x, bounds.x);
            ASSERT_EQ(space.pixelsOfBounds(bounds), pixels);
            ASSERT_EQ(space.pixelsOfFrame(frame), pixels);
        }
    }
}

} // namespace
} // namespace lumo::drawing
