#include "platform/macos/logic/StageManager.h"

#include <array>
#include <cmath>

namespace lumo::macos {

namespace {

// In the order in which they are asked; the last one stands in for systems that lack the others.
constexpr std::array<std::string_view, 3> settingKeys{"GloballyEnabled", "StageManagerEnabled",
                                                      "EnableStandardClickToShowDesktop"};

constexpr std::string_view programName = "WindowManager";
constexpr std::string_view programIdentifier = "com.apple.WindowManager";

std::optional<bool> truthOf(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return boolean;
    }
    const auto number = value.number();
    return number ? std::optional(std::fabs(*number) >= 1) : std::nullopt;
}

} // namespace

std::optional<bool>
stageManagerSetting(const std::function<std::optional<Value>(std::string_view key)> &preference) {
    for (const auto key : settingKeys) {
        const auto value = preference(key);
        if (const auto decided = value ? truthOf(*value) : std::nullopt) {
            return decided;
        }
    }
    return std::nullopt;
}

bool isStageManager(std::string_view name, const std::optional<std::string> &bundleIdentifier) {
    return name == programName || bundleIdentifier == programIdentifier;
}

} // namespace lumo::macos
