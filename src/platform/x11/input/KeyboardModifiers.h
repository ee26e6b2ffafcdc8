#pragma once

#include "platform/x11/server/PendingReads.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace lumo::x11 {

class Connection;

// Which bits of a key event's state the keys of the keyboard set; 0 for a key that it lacks. Where
// the left and the right key set different bits, that of the left one; where several keys have a
// symbol, that of one which has it without any modifier, as others may be keys that nobody can
// press. Control and Shift are the same everywhere.
struct ModifierBits {
    std::uint16_t command = 0; // Super
    std::uint16_t option = 0;  // Alt
    std::uint16_t numLock = 0;
    std::uint16_t scrollLock = 0;

    bool operator==(const ModifierBits &) const = default;
};

// The modifier keys as the keyboard has them now. Construction waits for the server; later changes
// of the mapping are read without waiting. Main thread only.
class KeyboardModifiers {
  public:
    explicit KeyboardModifiers(Connection &connection);
    KeyboardModifiers(const KeyboardModifiers &) = delete;
    KeyboardModifiers &operator=(const KeyboardModifiers &) = delete;

    const ModifierBits &bits() const { return bits_; }

    // The modifier flags (modifierFlag) of a state of the keyboard.
    std::uint32_t flagsOf(std::uint32_t state) const;

    // Calls the observer after the bits have changed.
    Handle onChange(std::function<void()> observer);

  private:
    void handle(const xcb_generic_event_t &event);
    void requestReads();
    void apply(const xcb_get_keyboard_mapping_reply_t *keysyms);

    Connection &connection_;
    PendingReads reads_;
    ReplyQueue replies_;
    std::vector<xcb_keycode_t> modifierKeys_; // those of each bit, padded with 0 to equal counts
    ModifierBits bits_;
    Signal<> changes_;
    Handle events_;
    Handle batches_;
};

} // namespace lumo::x11
