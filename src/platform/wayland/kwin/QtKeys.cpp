#include "platform/wayland/kwin/QtKeys.h"

#include "platform/HotKeyService.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace lumo::wayland::kwin {

namespace {

// Of the keys without a character.
constexpr std::array<std::pair<std::uint32_t, std::int32_t>, 24> named = {{
    {XKB_KEY_Escape, 0x01000000},
    {XKB_KEY_Tab, 0x01000001},
    {XKB_KEY_BackSpace, 0x01000003},
    {XKB_KEY_Return, 0x01000004},
    {XKB_KEY_KP_Enter, 0x01000005},
    {XKB_KEY_Insert, 0x01000006},
    {XKB_KEY_Delete, 0x01000007},
    {XKB_KEY_Pause, 0x01000008},
    {XKB_KEY_Print, 0x01000009},
    {XKB_KEY_Home, 0x01000010},
    {XKB_KEY_End, 0x01000011},
    {XKB_KEY_Left, 0x01000012},
    {XKB_KEY_Up, 0x01000013},
    {XKB_KEY_Right, 0x01000014},
    {XKB_KEY_Down, 0x01000015},
    {XKB_KEY_Page_Up, 0x01000016},
    {XKB_KEY_Page_Down, 0x01000017},
    {XKB_KEY_Menu, 0x01000055},
    {XKB_KEY_Help, 0x01000058},
    {XKB_KEY_XF86AudioLowerVolume, 0x01000070},
    {XKB_KEY_XF86AudioMute, 0x01000071},
    {XKB_KEY_XF86AudioRaiseVolume, 0x01000072},
    {XKB_KEY_Caps_Lock, 0x01000024},
    {XKB_KEY_Num_Lock, 0x01000025},
}};
// What keys of the keypad do without Num Lock.
constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 10> keypadNames = {{
    {XKB_KEY_KP_Home, XKB_KEY_Home},
    {XKB_KEY_KP_Left, XKB_KEY_Left},
    {XKB_KEY_KP_Up, XKB_KEY_Up},
    {XKB_KEY_KP_Right, XKB_KEY_Right},
    {XKB_KEY_KP_Down, XKB_KEY_Down},
    {XKB_KEY_KP_Page_Up, XKB_KEY_Page_Up},
    {XKB_KEY_KP_Page_Down, XKB_KEY_Page_Down},
    {XKB_KEY_KP_End, XKB_KEY_End},
    {XKB_KEY_KP_Insert, XKB_KEY_Insert},
    {XKB_KEY_KP_Delete, XKB_KEY_Delete},
}};
constexpr std::int32_t firstFunctionKey = 0x01000030;
constexpr std::int32_t keypad = 0x20000000;

constexpr std::array<std::pair<std::uint32_t, std::int32_t>, 4> modifierBits = {{
    {hotKeyModifier::shift, 0x02000000},
    {hotKeyModifier::control, 0x04000000},
    {hotKeyModifier::option, 0x08000000},
    {hotKeyModifier::command, 0x10000000},
}};

std::optional<std::int32_t> keyOf(std::uint32_t symbol) {
    const auto found =
        std::ranges::find(named, symbol, &std::pair<std::uint32_t, std::int32_t>::first);
    if (found != named.end()) {
        return found->second;
    }
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35) {
        return firstFunctionKey + static_cast<std::int32_t>(symbol - XKB_KEY_F1);
    }
    const auto known =
        std::ranges::find(keypadNames, symbol, &std::pair<std::uint32_t, std::uint32_t>::first);
    if (known != keypadNames.end()) {
        return keyOf(known->second);
    }
    // A letter is called by its upper case.
    const auto character = xkb_keysym_to_utf32(xkb_keysym_to_upper(symbol));
    return character >= 0x20 ? std::optional(static_cast<std::int32_t>(character)) : std::nullopt;
}

std::int32_t bitsOf(std::uint32_t modifiers) {
    std::int32_t bits = 0;
    for (const auto &[modifier, bit] : modifierBits) {
        bits |= (modifiers & modifier) != 0 ? bit : 0;
    }
    return bits;
}

bool isOfKeypad(std::uint32_t symbol) {
    return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal;
}

} // namespace

std::vector<std::int32_t> qtKeys(std::uint32_t symbol, std::uint32_t shiftedSymbol,
                                 std::uint32_t modifiers) {
    const auto key = keyOf(symbol);
    if (!key) {
        return {};
    }
    const auto shifted = keyOf(shiftedSymbol).value_or(*key);
    const auto bits = bitsOf(modifiers);
    if (isOfKeypad(symbol)) {
        return {*key | bits | keypad, *key | bits, shifted | bits | keypad, shifted | bits};
    }
    const bool isOther = (modifiers & hotKeyModifier::shift) != 0 && shifted != *key;
    return isOther ? std::vector{*key | bits, shifted | bitsOf(modifiers & ~hotKeyModifier::shift)}
                   : std::vector{*key | bits};
}

} // namespace lumo::wayland::kwin
