#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumo::x11 {

// What the keys of the keyboard mean, as the core protocol describes it.
struct Keymap {
    xcb_keycode_t firstKeycode = 0;
    std::size_t symbolsPerKey = 0;
    std::vector<xcb_keysym_t> symbols; // symbolsPerKey of each key, in the order of the keycodes
    // The keys of each of the eight modifiers, Shift first, padded with 0 to equal counts.
    std::vector<xcb_keycode_t> modifierKeys;
};

// Which bits of a key event's state the modifier keys of a keyboard set; 0 for a key that it lacks.
// Control and Shift are the same everywhere.
struct ModifierBits {
    std::uint16_t command = 0; // Super
    std::uint16_t option = 0;  // Alt
    std::uint16_t numLock = 0;
    std::uint16_t scrollLock = 0;

    bool operator==(const ModifierBits &) const = default;
};

// The modifier bits of a keymap. Where the left and the right key set different bits, that of the
// left one; where several keys have a symbol, that of one which has it without any modifier, as
// others may be keys that nobody can press.
ModifierBits modifierBits(const Keymap &keymap);

// The state of a key event in which these modifiers (hotKeyModifier) and no others are held; absent
// when the keyboard lacks one of them. Modifiers whose keys set the same bit are the same there.
std::optional<std::uint16_t> stateOf(const ModifierBits &bits, std::uint32_t modifiers);

// The modifier flags (modifierFlag) of a state of the keyboard.
std::uint32_t modifierFlags(const ModifierBits &bits, std::uint32_t state);

} // namespace lumo::x11
