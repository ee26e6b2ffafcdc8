#pragma once

#include "platform/Keyboard.h"
#include "platform/x11/input/KeySymbols.h"
#include "platform/x11/server/PendingReads.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>

namespace lumo::x11 {

class Connection;
class KeyboardModifiers;

// The names of keys in the layout that is in force: by the keyboard extension, and by the core
// protocol, which knows of one group only, where the server lacks that. Construction waits for the
// server; a later change of the layout is read without waiting. Main thread only.
class X11Keyboard final : public Keyboard {
  public:
    // Both outlive the keyboard.
    X11Keyboard(Connection &connection, KeyboardModifiers &modifiers);

    std::string keyName(std::int64_t keyCode) const override;
    Handle onNamesDidChange(std::function<void()> observer) override;

  private:
    void followGroup();
    void setGroup(std::uint8_t group);
    void requestSymbols();

    Connection &connection_;
    const KeyboardModifiers &modifiers_;
    PendingReads reads_;
    ReplyQueue replies_;
    KeySymbols symbols_;
    std::uint8_t group_ = 0; // in force
    Signal<> changed_;
    Handle keymaps_;
    Handle groups_;
    Handle batches_;
};

} // namespace lumo::x11
