#pragma once

#include "platform/PreferenceDomains.h"

namespace lumo::freedesktop {

// Linux desktops have no preferences of other programs that could be read by domain.
class NoPreferenceDomains final : public PreferenceDomains {
  public:
    std::optional<Value> value(std::string_view, std::string_view) const override {
        return std::nullopt;
    }
};

} // namespace lumo::freedesktop
