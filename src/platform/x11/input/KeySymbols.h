#pragma once

#include "platform/x11/input/Keymap.h"
#include "platform/x11/server/XcbXkb.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumo::x11 {

// What a key types alone and with Shift.
struct KeyLevels {
    xcb_keysym_t plain = XCB_NO_SYMBOL;
    xcb_keysym_t shifted = XCB_NO_SYMBOL;

    bool operator==(const KeyLevels &) const = default;
};

// What the keys of the keyboard type, in each group of the layout.
class KeySymbols {
  public:
    KeySymbols() = default;

    // By the core protocol: one group.
    explicit KeySymbols(const Keymap &keymap);

    // By the keyboard extension; a reply that holds the symbols of the keys.
    explicit KeySymbols(const xcb_xkb_get_map_reply_t &reply);

    // In the group that is in force; keys that have fewer groups say what becomes of the others.
    KeyLevels of(xcb_keycode_t keycode, std::uint8_t group) const;

  private:
    // As in the extension's protocol: the number of groups, and what becomes of others.
    struct Key {
        std::uint8_t groupInfo = 0;
        std::array<KeyLevels, 4> groups;
    };

    xcb_keycode_t first_ = 0;
    std::vector<Key> keys_; // in the order of the keycodes
};

} // namespace lumo::x11
