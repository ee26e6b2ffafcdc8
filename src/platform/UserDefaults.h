#pragma once

#include "support/Handle.h"
#include "support/Value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// This program's own preferences: typed values under string keys, kept from one run to the next.
// Main thread only. Writing never fails for the caller: what can't be kept on disk is logged by the
// backend and stays in force for this run.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    // The value under the key with the type under which it was stored; absent when there is none.
    virtual std::optional<Value> object(std::string_view key) const = 0;

    virtual void setBool(std::string_view key, bool value) = 0;
    virtual void setInteger(std::string_view key, std::int64_t value) = 0;
    virtual void setDouble(std::string_view key, double value) = 0;
    virtual void setString(std::string_view key, const std::string &value) = 0;
    virtual void setData(std::string_view key, const Bytes &value) = 0;

    // Removes the value under the key; nothing happens when there is none.
    virtual void removeObject(std::string_view key) = 0;

    // Calls the observer in a turn of the main loop after others than this process have changed the
    // values under these keys. Never where the system does not tell.
    virtual Handle
    onChangeByOthers(std::function<void(const std::vector<std::string> &keys)> observer) = 0;
};

} // namespace lumo
