#include "platform/macos/logic/OverrideClaims.h"

namespace lumo::macos {

std::vector<std::string>
brokenClaims(const std::vector<OverrideClaim> &claims,
             const std::function<bool(const OverrideClaim &)> &isImplemented,
             const std::function<bool(const OverrideClaim &)> &isDeclaredByPlatform) {
    std::vector<std::string> broken;
    for (const auto &claim : claims) {
        const std::string method = "-[" + claim.className + " " + claim.selector + "]";
        if (!isImplemented(claim)) {
            broken.push_back(method + " is not implemented");
        } else if (!isDeclaredByPlatform(claim)) {
            broken.push_back(method + " overrides nothing of " +
                             (claim.protocol.empty() ? "its superclass" : claim.protocol));
        }
    }
    return broken;
}

} // namespace lumo::macos
