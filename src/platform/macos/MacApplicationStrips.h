#pragma once

#include "platform/ApplicationStrips.h"

namespace lumo::macos {

// Stage Manager's, by its preferences.
class MacApplicationStrips final : public ApplicationStrips {
  public:
    std::optional<bool> areEnabled() const override;
    bool areDrawnBy(const std::string &name,
                    const std::optional<std::string> &bundleIdentifier) const override;
};

} // namespace lumo::macos
