#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <string>

namespace lumo {

// What the keys of the keyboard in use are called. Main thread only; never waits.
class Keyboard {
  public:
    virtual ~Keyboard() = default;

    // The name of the key at the position that the virtual key code has on the ANSI layout, as
    // people read it; "Key" and the code in decimal for a key that has none.
    virtual std::string keyName(std::int64_t keyCode) const = 0;

    // Calls the observer after keys got other names, as the user changed the layout.
    virtual Handle onNamesDidChange(std::function<void()> observer) = 0;
};

} // namespace lumo
