#include "platform/x11/input/PointerDevices.h"

#include <gtest/gtest.h>

namespace lumo::x11 {
namespace {

TEST(PointerAxisTest, PositionsBecomeMovements) {
    PointerAxis mouse;
    EXPECT_EQ(mouse.movement(30, 1000), 30);
    EXPECT_EQ(mouse.movement(30, 1000), 30);
    PointerAxis tablet{true, 0, 32768};
    EXPECT_EQ(tablet.movement(20000, 1024), 0) << "it may have been put down anywhere";
    EXPECT_EQ(tablet.movement(23200, 1024), 100);
    EXPECT_EQ(tablet.movement(20000, 1024), -100);
    PointerAxis unknown{true, 0, 0};
    unknown.movement(5, 1024);
    EXPECT_EQ(unknown.movement(15, 1024), 10);
}

} // namespace
} // namespace lumo::x11
