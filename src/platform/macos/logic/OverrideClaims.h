#pragma once

#include <functional>
#include <string>
#include <vector>

namespace lumo::macos {

// A method that is meant to override one of the platform's, or to answer one of its protocols. The
// language would take a misspelt name for a new method.
struct OverrideClaim {
    std::string className;
    std::string selector;
    std::string protocol; // empty when the superclass has the method
};

// The claims that do not hold, one line each.
std::vector<std::string>
brokenClaims(const std::vector<OverrideClaim> &claims,
             const std::function<bool(const OverrideClaim &)> &isImplemented,
             const std::function<bool(const OverrideClaim &)> &isDeclaredByPlatform);

} // namespace lumo::macos
