#include "settings/EffectMode.h"

#include <cstddef>

namespace lumo {

namespace {

struct Texts {
    std::string_view rawValue;
    std::string_view displayName;
    std::string_view description;
};

constexpr std::array<Texts, allEffectModes.size()> texts{{
    {"dim", "Dim", "Darkens background windows with a translucent overlay."},
    {"softBlur", "Soft Blur", "Blurs background windows to reduce visual distraction."},
    {"tint", "Tint", "Adds a subtle tint over background windows."},
}};

const Texts &textsOf(EffectMode mode) {
    return texts.at(static_cast<std::size_t>(mode));
}

} // namespace

std::string_view rawValue(EffectMode mode) {
    return textsOf(mode).rawValue;
}

std::optional<EffectMode> effectModeFromRawValue(std::string_view text) {
    for (const auto mode : allEffectModes) {
        if (rawValue(mode) == text) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string_view displayName(EffectMode mode) {
    return textsOf(mode).displayName;
}

std::string_view description(EffectMode mode) {
    return textsOf(mode).description;
}

} // namespace lumo
