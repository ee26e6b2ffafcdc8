#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/PreferenceDomains.h"

#include <array>
#include <cmath>

namespace lumo {

namespace {

constexpr std::string_view windowManagerDomain = "com.apple.WindowManager";

// In the order in which they are asked; the last one stands in for systems that lack the others.
constexpr std::array<std::string_view, 3> stageManagerKeys{"GloballyEnabled", "StageManagerEnabled",
                                                           "EnableStandardClickToShowDesktop"};

// Absent for a value that is neither a boolean nor a number.
std::optional<bool> truthOf(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return boolean;
    }
    if (const auto number = value.number()) {
        return std::fabs(*number) >= 1;
    }
    return std::nullopt;
}

} // namespace

bool OverlayManager::isStageManagerEnabled() {
    for (const auto key : stageManagerKeys) {
        const auto value = platform_.preferenceDomains.value(key, windowManagerDomain);
        if (const auto decided = value ? truthOf(*value) : std::nullopt) {
            lastKnownStageManagerEnabled_ = decided;
            return *decided;
        }
    }
    return lastKnownStageManagerEnabled_.value_or(false);
}

std::vector<Rect> OverlayManager::stageManagerExclusionRects(const Screen &screen,
                                                             const FocusContext &context) {
    if (!isStageManagerEnabled()) {
        return {};
    }
    return stageManagerStrips(screen.frame, *context.allWindows,
                              highestScreenEdge(platform_.screens.screens()));
}

} // namespace lumo
