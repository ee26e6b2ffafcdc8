#pragma once

#include "platform/ApplicationStrips.h"

namespace lumo::freedesktop {

// Linux desktops have no strips of recent applications that a program could ask for.
class NoApplicationStrips final : public ApplicationStrips {
  public:
    std::optional<bool> areEnabled() const override { return std::nullopt; }
    bool areDrawnBy(const std::string &, const std::optional<std::string> &) const override {
        return false;
    }
};

} // namespace lumo::freedesktop
