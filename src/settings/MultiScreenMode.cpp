#include "settings/MultiScreenMode.h"

namespace lumo {

std::string_view rawValue(MultiScreenMode mode) {
    return mode == MultiScreenMode::global ? "global" : "perScreen";
}

std::optional<MultiScreenMode> multiScreenModeFromRawValue(std::string_view text) {
    for (const auto mode : allMultiScreenModes) {
        if (rawValue(mode) == text) {
            return mode;
        }
    }
    return std::nullopt;
}

} // namespace lumo
