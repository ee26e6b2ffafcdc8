#include "platform/freedesktop/DesktopSettings.h"
#include "platform/freedesktop/DotPicture.h"
#include "platform/freedesktop/KeyNames.h"
#include "platform/freedesktop/KeyPositions.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <cstddef>
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

// Every key that a keyboard can have has a code, and no two have the same.
TEST(KeyPositionsTest, SamePositionsBothWays) {
    for (std::uint32_t keycode = 9; keycode < 256; ++keycode) {
        EXPECT_EQ(keycodeOfVirtualKey(virtualKeyOfKeycode(keycode).value()), keycode);
    }
    constexpr std::uint32_t spaceOnceMore = 256 + 57;
    EXPECT_EQ(keycodeOfVirtualKey(spaceOnceMore), std::nullopt);
    EXPECT_EQ(keycodeOfVirtualKey(256 + 248), std::nullopt);
    EXPECT_EQ(virtualKeyOfKeycode(0), std::nullopt);
    EXPECT_EQ(virtualKeyOfKeycode(7), std::nullopt);
    EXPECT_EQ(virtualKeyOfKeycode(1000), std::nullopt);
    // Keys whose numbers are out of any order, by what Linux calls them.
    const std::map<std::uint32_t, unsigned> positions = {
        {49, 57}, {2, 32},    {18, 2},  {23, 6},    {22, 7},
        {97, 64}, {126, 103}, {76, 96}, {117, 111}, {256 + 99, 99}};
    for (const auto &[virtualKey, kernelKey] : positions) {
        EXPECT_EQ(keycodeOfVirtualKey(virtualKey), kernelKey + 8) << virtualKey;
    }
}

TEST(KeyNamesTest, NamesThatPeopleKnow) {
    struct Case {
        std::uint32_t plain;
        const char *name;
        std::uint32_t shifted = XKB_KEY_NoSymbol;
    };
    for (const auto &[plain, name, shifted] : {
             Case{XKB_KEY_a, "A", XKB_KEY_A},
             Case{XKB_KEY_eacute, "É", XKB_KEY_2},
             Case{XKB_KEY_Cyrillic_es, "С"},
             Case{XKB_KEY_1, "1", XKB_KEY_exclam},
             Case{XKB_KEY_dead_circumflex, "^"},
             Case{XKB_KEY_space, "Space"},
             Case{XKB_KEY_Delete, "Delete"},
             Case{XKB_KEY_BackSpace, "Backspace"},
             Case{XKB_KEY_Left, "Left"},
             Case{XKB_KEY_Print, "Print", XKB_KEY_Sys_Req},
             Case{XKB_KEY_Next, "Page Down"},
             Case{XKB_KEY_Scroll_Lock, "Scroll Lock"},
             Case{XKB_KEY_KP_Home, "Keypad 7", XKB_KEY_KP_7},
             Case{XKB_KEY_KP_Page_Up, "Keypad Page Up"},
             Case{XKB_KEY_KP_Add, "Keypad +", XKB_KEY_KP_Add},
             Case{XKB_KEY_KP_Enter, "Keypad Enter"},
             Case{XKB_KEY_XF86AudioPlay, "Play", XKB_KEY_XF86AudioPause},
             Case{XKB_KEY_XF86AudioRaiseVolume, "Volume Up"},
             Case{XKB_KEY_XF86MyComputer, "My Computer"},
             Case{XKB_KEY_XF86Launch5, "Launch 5"},
             Case{XKB_KEY_NoSymbol, ""},
         }) {
        EXPECT_EQ(keyNameOf(plain, shifted), name);
    }
}

// Premultiplied: the title's colour in the middle, a rim of the opposite shade, nothing outside.
TEST(DotPictureTest, DiscWithARimOnATransparentSquare) {
    const StatusTitle title{"\u25CF", {1, 0, 0, 1}, 15, true, -0.5};
    const StatusTitle grey{"\u25CF", {0.28, 0.28, 0.28, 1}, 15, true, -0.5};
    for (const int side : {16, 22, 24, 32, 48}) {
        const auto onBlack = dotPicture(grey, side).pixels;
        int brightest = 0;
        for (std::size_t at = 0; at < onBlack.size(); at += 4) {
            brightest = std::max<int>(brightest, onBlack[at]);
        }
        EXPECT_GE(brightest, 140) << "a dark dot can be told from a black panel at " << side;
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
