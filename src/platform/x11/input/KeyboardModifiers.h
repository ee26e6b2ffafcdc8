#pragma once

#include "platform/x11/input/Keymap.h"
#include "platform/x11/server/PendingReads.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>

namespace lumo::x11 {

class Connection;

// The modifier keys of the keyboard in use. By the core protocol, which describes them for servers
// with and without the keyboard extension. Construction waits for the server; later changes of the
// keymap are read without waiting. Main thread only.
class KeyboardModifiers {
  public:
    explicit KeyboardModifiers(Connection &connection);
    KeyboardModifiers(const KeyboardModifiers &) = delete;
    KeyboardModifiers &operator=(const KeyboardModifiers &) = delete;

    const ModifierBits &bits() const { return bits_; }

    // The modifier flags (modifierFlag) of a state of the keyboard.
    std::uint32_t flagsOf(std::uint32_t state) const { return modifierFlags(bits_, state); }

    // Calls the observer after the bits have changed.
    Handle onChange(std::function<void()> observer);

    const Keymap &keymap() const { return keymap_; }

    // Calls the observer after the keymap was read anew, which may be the same.
    Handle onKeymapChange(std::function<void()> observer);

  private:
    void requestReads();
    void apply(const xcb_get_keyboard_mapping_reply_t *symbols);

    Connection &connection_;
    PendingReads reads_;
    ReplyQueue replies_;
    Keymap keymap_;
    ModifierBits bits_;
    Signal<> changes_;
    Signal<> keymapChanges_;
    std::array<Handle, 3> events_;
    Handle batches_;
};

} // namespace lumo::x11
