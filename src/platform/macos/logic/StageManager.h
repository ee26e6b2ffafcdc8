#pragma once

#include "support/Value.h"

#include <functional>
#include <optional>
#include <string_view>

namespace lumo::macos {

// The domain of Stage Manager's preferences.
inline constexpr std::string_view stageManagerDomain = "com.apple.WindowManager";

// Whether Stage Manager is on: what the first of its keys says that has a boolean or a number,
// which counts by its whole part. Absent when none has.
std::optional<bool>
stageManagerSetting(const std::function<std::optional<Value>(std::string_view key)> &preference);

// Whether the program of that name and bundle identifier draws Stage Manager's windows.
bool isStageManager(std::string_view name, const std::optional<std::string> &bundleIdentifier);

} // namespace lumo::macos
