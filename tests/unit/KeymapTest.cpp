#include "platform/x11/input/Keymap.h"

#include "platform/EventMonitors.h"
#include "platform/HotKeyService.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>

namespace lumo::x11 {
namespace {

constexpr xcb_keysym_t none = 0;
constexpr xcb_keysym_t numLock = 0xff7f;
constexpr xcb_keysym_t scrollLock = 0xff14;
constexpr xcb_keysym_t altLeft = 0xffe9;
constexpr xcb_keysym_t altRight = 0xffea;
constexpr xcb_keysym_t metaLeft = 0xffe7;
constexpr xcb_keysym_t superLeft = 0xffeb;
constexpr xcb_keysym_t superRight = 0xffec;

struct ModifierKey {
    std::size_t modifier; // 0 to 7
    xcb_keysym_t plain;
    xcb_keysym_t withShift = none;
};

// Keys from keycode 8 on, each in one modifier.
Keymap keymapOf(std::initializer_list<ModifierKey> keys) {
    Keymap keymap{.firstKeycode = 8, .symbolsPerKey = 2, .symbols = {}, .modifierKeys = {}};
    keymap.modifierKeys.resize(8 * keys.size());
    std::size_t index = 0;
    for (const auto &key : keys) {
        keymap.symbols.push_back(key.plain);
        keymap.symbols.push_back(key.withShift);
        keymap.modifierKeys[key.modifier * keys.size() + index] =
            static_cast<xcb_keycode_t>(keymap.firstKeycode + index);
        ++index;
    }
    return keymap;
}

TEST(KeymapTest, ModifierBits) {
    const struct {
        const char *name;
        Keymap keymap;
        ModifierBits bits;
    } table[] = {
        {"none", {}, {}},
        {"a usual keyboard",
         keymapOf({{3, altLeft, metaLeft},
                   {3, altRight, metaLeft},
                   {4, numLock},
                   {6, superLeft},
                   {6, superRight}}),
         {.command = 0x40, .option = 0x08, .numLock = 0x10, .scrollLock = 0}},
        {"left before right, wherever they are",
         keymapOf({{3, altRight}, {5, altLeft}, {4, superRight}, {7, superLeft}}),
         {.command = 0x80, .option = 0x20, .numLock = 0, .scrollLock = 0}},
        {"right keys alone",
         keymapOf({{7, altRight}, {5, superRight}, {5, scrollLock}}),
         {.command = 0x20, .option = 0x80, .numLock = 0, .scrollLock = 0x20}},
        {"a key that has the symbol by itself comes first",
         keymapOf({{3, none, superLeft}, {6, superLeft}}),
         {.command = 0x40, .option = 0, .numLock = 0, .scrollLock = 0}},
        {"among equals the first modifier",
         keymapOf({{6, superLeft}, {5, superLeft}}),
         {.command = 0x20, .option = 0, .numLock = 0, .scrollLock = 0}},
    };
    for (const auto &row : table) {
        EXPECT_EQ(modifierBits(row.keymap), row.bits) << row.name;
    }
    auto outside = keymapOf({{6, superLeft}});
    outside.modifierKeys[0] = 200;
    outside.modifierKeys[1] = 3;
    EXPECT_EQ(modifierBits(outside).command, 0x40) << "keycodes beyond the symbols";
}

// Of the same two shortcuts, on the keyboards that a user goes through.
TEST(KeymapTest, MasksBecomeOneWhenTheLayoutChanges) {
    constexpr auto controlOption = hotKeyModifier::control | hotKeyModifier::option;
    constexpr auto controlCommand = hotKeyModifier::control | hotKeyModifier::command;
    using State = std::optional<std::uint16_t>;
    const struct {
        const char *name;
        Keymap keymap;
        State option;
        State command;
    } table[] = {
        {"apart", keymapOf({{3, altLeft}, {6, superLeft}}), 0x0c, 0x44},
        {"one modifier has both keys", keymapOf({{3, altLeft}, {3, superLeft}}), 0x0c, 0x0c},
        {"the Super key works as Control", keymapOf({{3, altLeft}, {2, superLeft}}), 0x0c, 0x04},
        {"no Super key", keymapOf({{3, altLeft}}), 0x0c, std::nullopt},
    };
    for (const auto &row : table) {
        const auto bits = modifierBits(row.keymap);
        EXPECT_EQ(stateOf(bits, controlOption), row.option) << row.name;
        EXPECT_EQ(stateOf(bits, controlCommand), row.command) << row.name;
        EXPECT_EQ(stateOf(bits, 0), State(0));
        EXPECT_EQ(stateOf(bits, hotKeyModifier::shift), State(XCB_MOD_MASK_SHIFT));
    }
}

TEST(KeymapTest, FlagsOfState) {
    const ModifierBits bits{.command = 0x40, .option = 0x08, .numLock = 0x10, .scrollLock = 0};
    EXPECT_EQ(modifierFlags(bits, 0), 0U);
    EXPECT_EQ(modifierFlags(bits, 0x4f), modifierFlag::shift | modifierFlag::capsLock |
                                             modifierFlag::control | modifierFlag::option |
                                             modifierFlag::command);
    EXPECT_EQ(modifierFlags(bits, 0x1fb0), 0U) << "Num Lock, other modifiers and buttons";
    EXPECT_EQ(modifierFlags({}, 0xff),
              modifierFlag::shift | modifierFlag::capsLock | modifierFlag::control)
        << "a keyboard without the keys";
}

} // namespace
} // namespace lumo::x11
