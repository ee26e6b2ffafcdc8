#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace lumo {

// Whether each display has a focus target of its own, or one target serves all displays.
enum class MultiScreenMode { perScreen, global };

// In the order of the picker.
inline constexpr std::array allMultiScreenModes{MultiScreenMode::perScreen,
                                                MultiScreenMode::global};

// The text under which the mode is stored and by which it is identified.
std::string_view rawValue(MultiScreenMode mode);

// The mode of exactly that raw value; absent for any other text.
std::optional<MultiScreenMode> multiScreenModeFromRawValue(std::string_view text);

} // namespace lumo
