#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace lumo {

// What the overlay does to the background windows.
enum class EffectMode { dim, softBlur, tint };

// In the order of the picker.
inline constexpr std::array allEffectModes{EffectMode::dim, EffectMode::softBlur, EffectMode::tint};

// The text under which the mode is stored and by which it is identified.
std::string_view rawValue(EffectMode mode);

// The mode of exactly that raw value; absent for any other text.
std::optional<EffectMode> effectModeFromRawValue(std::string_view text);

std::string_view displayName(EffectMode mode);
std::string_view description(EffectMode mode);

} // namespace lumo
