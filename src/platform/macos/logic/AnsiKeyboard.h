#pragma once

#include "platform/Keyboard.h"

namespace lumo::macos {

// The keys by their names on the ANSI layout, whatever the layout in force.
class AnsiKeyboard final : public Keyboard {
  public:
    // For letters, Return, Tab, Space, Delete, Escape and the function keys up to F12; all others
    // are "Key" and the code.
    std::string keyName(std::int64_t keyCode) const override;

    Handle onNamesDidChange(std::function<void()> observer) override;
};

} // namespace lumo::macos
