#pragma once

#include <array>
#include <string>
#include <string_view>

namespace lumo {

// The lock stabilities that the user is offered for the Cover App's window. What is stored is a
// duration, which need not be one of these.
enum class CoverLockPreset { fast, balanced, stable };

// In the order of the picker.
inline constexpr std::array allCoverLockPresets{CoverLockPreset::fast, CoverLockPreset::balanced,
                                                CoverLockPreset::stable};

std::string_view title(CoverLockPreset preset);

// In seconds.
double duration(CoverLockPreset preset);

// The preset to show for a stored duration in seconds: the nearest one, and the shorter of two that
// are equally near.
CoverLockPreset nearestCoverLockPreset(double seconds);

// A duration in seconds as a whole number of milliseconds, without a unit.
std::string millisecondsText(double seconds);

// One line that names the nearest preset, the stored duration and what that means.
std::string coverLockDetail(double seconds);

} // namespace lumo
