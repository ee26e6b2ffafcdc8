#pragma once

#include "support/Value.h"

#include <optional>
#include <string_view>

namespace lumo {

// Preferences that belong to other programs.
class PreferenceDomains {
  public:
    virtual ~PreferenceDomains() = default;

    // The value under the key for the current user on this host; absent when the domain, the key or
    // the whole facility is missing. Cheap enough for every tick.
    virtual std::optional<Value> value(std::string_view key, std::string_view domain) const = 0;
};

} // namespace lumo
