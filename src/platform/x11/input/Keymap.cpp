#include "platform/x11/input/Keymap.h"

#include "platform/EventMonitors.h"
#include "platform/HotKeyService.h"

#include <array>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::size_t modifierCount = 8; // of the core protocol

// From X11/keysymdef.h.
constexpr xcb_keysym_t numLockKeysym = 0xff7f;
constexpr xcb_keysym_t scrollLockKeysym = 0xff14;
constexpr xcb_keysym_t altLeftKeysym = 0xffe9;
constexpr xcb_keysym_t altRightKeysym = 0xffea;
constexpr xcb_keysym_t superLeftKeysym = 0xffeb;
constexpr xcb_keysym_t superRightKeysym = 0xffec;

// The bit of the first modifier that has a key with this symbol, in the lowest column of the
// symbols in which there is one; 0 when there is none.
std::uint16_t bitOf(const Keymap &keymap, xcb_keysym_t symbol) {
    const auto keysPerModifier = keymap.modifierKeys.size() / modifierCount;
    for (std::size_t column = 0; column < keymap.symbolsPerKey; ++column) {
        for (std::size_t index = 0; index < keymap.modifierKeys.size(); ++index) {
            const auto keycode = keymap.modifierKeys[index];
            if (keycode < keymap.firstKeycode) {
                continue;
            }
            const auto row = static_cast<std::size_t>(keycode - keymap.firstKeycode);
            const auto place = row * keymap.symbolsPerKey + column;
            if (place < keymap.symbols.size() && keymap.symbols[place] == symbol) {
                return static_cast<std::uint16_t>(1U << (index / keysPerModifier));
            }
        }
    }
    return 0;
}

std::uint16_t bitOfEither(const Keymap &keymap, xcb_keysym_t left, xcb_keysym_t right) {
    const auto bit = bitOf(keymap, left);
    return bit != 0 ? bit : bitOf(keymap, right);
}

} // namespace

ModifierBits modifierBits(const Keymap &keymap) {
    return {.command = bitOfEither(keymap, superLeftKeysym, superRightKeysym),
            .option = bitOfEither(keymap, altLeftKeysym, altRightKeysym),
            .numLock = bitOf(keymap, numLockKeysym),
            .scrollLock = bitOf(keymap, scrollLockKeysym)};
}

std::optional<std::uint16_t> stateOf(const ModifierBits &bits, std::uint32_t modifiers) {
    const std::array<std::pair<std::uint32_t, std::uint16_t>, 4> table = {{
        {hotKeyModifier::command, bits.command},
        {hotKeyModifier::option, bits.option},
        {hotKeyModifier::control, XCB_MOD_MASK_CONTROL},
        {hotKeyModifier::shift, XCB_MOD_MASK_SHIFT},
    }};
    std::uint16_t state = 0;
    for (const auto &[modifier, bit] : table) {
        if ((modifiers & modifier) == 0) {
            continue;
        }
        if (bit == 0) {
            return std::nullopt;
        }
        state |= bit;
    }
    return state;
}

std::uint32_t modifierFlags(const ModifierBits &bits, std::uint32_t state) {
    const auto flag = [state](std::uint32_t bit, std::uint32_t flagBit) {
        return (state & bit) != 0 ? flagBit : 0U;
    };
    return flag(XCB_MOD_MASK_SHIFT, modifierFlag::shift) |
           flag(XCB_MOD_MASK_CONTROL, modifierFlag::control) |
           flag(XCB_MOD_MASK_LOCK, modifierFlag::capsLock) |
           flag(bits.option, modifierFlag::option) | flag(bits.command, modifierFlag::command);
}

} // namespace lumo::x11
