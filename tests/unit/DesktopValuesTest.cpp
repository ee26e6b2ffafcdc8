#include "platform/freedesktop/DesktopSettings.h"
#include "platform/freedesktop/DotPicture.h"
#include "platform/freedesktop/KeyPositions.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <optional>

namespace lumo::freedesktop {
namespace {

using testing::ElementsAre;

TEST(DesktopSettingsTest, ColoursOfEveryLength) {
    EXPECT_EQ(colorFromHexadecimal("#f00"), (Color{1, 0, 0, 1}));
    EXPECT_EQ(colorFromHexadecimal("#0000ff"), (Color{0, 0, 1, 1}));
    EXPECT_EQ(colorFromHexadecimal("#ffff00003333"), (Color{1, 0, 0.2, 1}));
    for (const char *text : {"", "#", "#12", "#1234", "123456", "#12345g", "#+12345", "blue"}) {
        EXPECT_EQ(colorFromHexadecimal(text), std::nullopt) << text;
    }
}

// The inverse agrees with the table, and every key of a full keyboard has its place.
TEST(KeyPositionsTest, SamePositionsBothWays) {
    int keys = 0;
    for (std::uint32_t virtualKey = 0; virtualKey < 200; ++virtualKey) {
        if (const auto keycode = keycodeOfVirtualKey(virtualKey)) {
            EXPECT_EQ(virtualKeyOfKeycode(*keycode), virtualKey);
            ++keys;
        }
    }
    EXPECT_GE(keys, 104);
    EXPECT_EQ(virtualKeyOfKeycode(0), std::nullopt);
    EXPECT_EQ(virtualKeyOfKeycode(7), std::nullopt);
    EXPECT_EQ(virtualKeyOfKeycode(1000), std::nullopt);
    // Keys whose numbers are out of any order, by what Linux calls them.
    const std::map<std::uint32_t, unsigned> positions = {
        {49, 57}, {2, 32}, {18, 2}, {23, 6}, {22, 7}, {97, 64}, {126, 103}, {76, 96}, {117, 111}};
    for (const auto &[virtualKey, kernelKey] : positions) {
        EXPECT_EQ(keycodeOfVirtualKey(virtualKey), kernelKey + 8) << virtualKey;
    }
}

// Premultiplied: the title's colour in the middle, a rim of the opposite shade, nothing outside.
TEST(DotPictureTest, DiscWithARimOnATransparentSquare) {
    const StatusTitle title{"\u25CF", {1, 0, 0, 1}, 15, true, -0.5};
    for (const int side : {16, 22, 48}) {
        const auto image = dotPicture(title, side);
        ASSERT_EQ(image.width, side);
        ASSERT_EQ(image.height, side);
        const auto pixel = [&](int x, int y) {
            const auto at = static_cast<std::size_t>(y * side + x) * 4;
            return std::vector(image.pixels.begin() + static_cast<std::ptrdiff_t>(at),
                               image.pixels.begin() + static_cast<std::ptrdiff_t>(at + 4));
        };
        EXPECT_THAT(pixel(side / 2, side / 2), ElementsAre(255, 0, 0, 255));
        EXPECT_THAT(pixel(0, 0), ElementsAre(0, 0, 0, 0));
        int rim = 0;
        for (int x = 0; x < side; ++x) {
            const auto each = pixel(x, side / 2);
            rim += each[1] > 0 && each[1] == each[2] ? 1 : 0;
        }
        EXPECT_GE(rim, 2) << "a light rim around a dark colour, on both sides";
    }
}

} // namespace
} // namespace lumo::freedesktop
