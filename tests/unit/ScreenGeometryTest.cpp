#include "overlay/ScreenGeometry.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

namespace lumo {
namespace {

using testing::HasSubstr;

TEST(ScreenGeometry, BoundsFromTheHighestScreenEdge) {
    EXPECT_EQ(highestScreenEdge({}), 0);
    EXPECT_EQ(highestScreenEdge({{1, {0, -1000, 800, 600}, 1}}), -400);
    EXPECT_EQ(displayLocalRect({1400, 100, 800, 600}, {1440, 0, 1920, 1080}, 1080),
              (Rect{0, 380, 760, 600}));
    EXPECT_EQ(displayLocalRect({1400, 100, 800, 600}, {0, 0, 1440, 900}, 1080),
              (Rect{1400, 380, 40, 520}));
}

// A display of 1920 x 1080: strips are 81 to 806.4 wide, at least 216 high and reach to within 8
// points of an edge.
TEST(ScreenGeometry, StripsByPlaceAndShape) {
    const Rect screen{1440, 0, 1920, 1080};
    struct Case {
        const char *what = nullptr;
        Rect local; // y up
        std::vector<Rect> expected;
    };
    const std::vector<Case> cases = {
        {"touching the left edge", {0, 200, 200, 600}, {{0, 196, 204, 608}}},
        {"touching the right edge", {1708, 200.5, 212, 600}, {{1704, 196, 216, 609}}},
        {"hanging out at the left", {-100, 200, 200, 600}, {{0, 196, 104, 608}}},
        {"8 points from the left", {8, 200, 200, 600}, {{4, 196, 208, 608}}},
        {"9 points from the left", {9, 200, 200, 600}, {}},
        {"8 points from the right", {1712, 200, 200, 600}, {{1708, 196, 208, 608}}},
        {"9 points from the right", {1711, 200, 200, 600}, {}},
        {"80 wide", {0, 200, 80, 600}, {}},
        {"215 high", {0, 200, 81, 215}, {}},
        {"216 high", {0, 200, 81, 216}, {{0, 196, 85, 224}}},
        {"the whole screen", {0, 0, 1920, 1080}, {}},
        {"806 wide", {0, 0, 806, 1080}, {{0, 0, 810, 1080}}},
        {"807 wide", {0, 0, 807, 1080}, {}},
        {"on the other display", {-300, 200, 200, 600}, {}},
    };
    for (const auto &[what, local, expected] : cases) {
        const Rect bounds{local.x + screen.x, 1080 - local.maxY(), local.width, local.height};
        EXPECT_EQ(stripsOnScreen(screen, {bounds}, 1080), expected) << what;
    }
}

TEST(ScreenGeometry, SignatureOfExclusionRectangles) {
    EXPECT_EQ(exclusionSignature({}), "none");
    EXPECT_EQ(exclusionSignature({{0, 120, 212, 640}, {1708, 120, 212, 640}}),
              "0,120,212,640|1708,120,212,640");
    EXPECT_EQ(exclusionSignature({{-0.5, 0.5, 2.5, 3.49}}), "-1,1,3,3");
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_DEATH(exclusionSignature({{0, 0, infinity, 1}}), HasSubstr("out of range"));
    EXPECT_DEATH(exclusionSignature({{std::nan(""), 0, 1, 1}}), HasSubstr("out of range"));
}

} // namespace
} // namespace lumo
