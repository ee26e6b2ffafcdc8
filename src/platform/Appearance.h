#pragma once

#include "support/Handle.h"

#include <functional>
#include <optional>

namespace lumo {

// Whether the user prefers programs to be dark. Main thread only; never waits.
class Appearance {
  public:
    virtual ~Appearance() = default;

    // Absent while the desktop has not said, or has no such preference.
    virtual std::optional<bool> prefersDark() const = 0;

    // Calls the observer after prefersDark() has changed. Asks the desktop from the first
    // subscription on.
    virtual Handle onChange(std::function<void()> observer) = 0;
};

} // namespace lumo
