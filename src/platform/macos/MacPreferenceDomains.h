#pragma once

#include "platform/PreferenceDomains.h"

namespace lumo::macos {

class MacPreferenceDomains final : public PreferenceDomains {
  public:
    std::optional<Value> value(std::string_view key, std::string_view domain) const override;
};

} // namespace lumo::macos
