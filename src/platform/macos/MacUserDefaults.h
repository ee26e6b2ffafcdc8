#pragma once

#include "platform/UserDefaults.h"

namespace lumo::macos {

// The standard user defaults, in the domain of the bundle.
class MacUserDefaults final : public UserDefaults {
  public:
    std::optional<Value> object(std::string_view key) const override;

    void setBool(std::string_view key, bool value) override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setDouble(std::string_view key, double value) override;
    void setString(std::string_view key, const std::string &value) override;
    void setData(std::string_view key, const Bytes &value) override;
    void removeObject(std::string_view key) override;

    // There is one instance of this program for each user.
    Handle onChangeByOthers(std::function<void(const std::vector<std::string> &)>) override {
        return {};
    }
};

} // namespace lumo::macos
