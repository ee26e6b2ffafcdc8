#pragma once

#include <string_view>

namespace lumo {

// Stops the program with "[Lumo] fatal: " and the message on standard error. For broken invariants
// only; what users or the system may cause is never one.
[[noreturn]] void fatal(std::string_view message);

// Calls fatal() with the message when the condition does not hold.
inline void require(bool condition, std::string_view message) {
    if (!condition) {
        fatal(message);
    }
}

} // namespace lumo
