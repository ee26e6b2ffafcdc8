#pragma once

#include <optional>
#include <string>

namespace lumo {

// Whether the desktop starts this program when the user logs in. Main thread only.
class LoginItem {
  public:
    virtual ~LoginItem() = default;

    // Registers or unregisters the program; returns what went wrong in words, or nothing
    // when it succeeded. Asking for what is so already succeeds.
    virtual std::optional<std::string> registerMainApplication() = 0;
    virtual std::optional<std::string> unregisterMainApplication() = 0;
};

} // namespace lumo
