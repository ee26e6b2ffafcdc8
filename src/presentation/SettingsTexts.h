#pragma once

#include "platform/UpdateFramework.h"
#include "presentation/CoverAppChoice.h"
#include "settings/EffectMode.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

class SettingsStore;
struct Capabilities;

// What the settings window says and where its sliders end. The texts that never change stand in the
// pages themselves.

struct SliderRange {
    double minimum = 0;
    double maximum = 1;
    double step = 0.01;
};

inline constexpr SliderRange peekDurationRange{0.5, 5.0, 0.5}; // seconds
inline constexpr SliderRange intensityRange{0, 1, 0.05};
inline constexpr SliderRange transitionSpeedRange{0, 1, 0.05}; // seconds
inline constexpr SliderRange shakeSensitivityRange{0, 1, 0.01};

// The names under which the shake gesture's modifiers are stored, in the order in which they are
// offered.
inline constexpr std::array<std::string_view, 5> shakeModifierNames{"None", "Shift", "Option",
                                                                    "Command", "Control"};

// A fraction as a whole percentage; seconds with as many decimals as the sliders need.
std::string percentText(double fraction);
std::string secondsText(double seconds);

// Tells what the chosen list means.
std::string_view ruleModeExplanation(bool useWhitelistMode);

// The name to show for the Cover App: that of its entry in the list, else coverAppName(); "None"
// without either.
std::string selectedCoverAppName(const Platform &platform, const SettingsStore &settings,
                                 const std::vector<CoverAppChoice> &available);

// How the Privacy Cover does. While nothing follows it, since the effect is off, "Off" says so of
// the effect alone: the cover that is switched on lacks an application, or is ready.
std::string privacyCoverStatus(const SettingsStore &settings);

// Whether the Cover App may look as if it held every display although each has its own focus.
bool shouldShowCoverConflictHint(const SettingsStore &settings);

// The note below a shortcut: what is worth knowing about it, if anything, and that another program
// has its keys.
std::string shortcutNote(std::string_view note, bool isTaken);

// What an effect does, and what of it this desktop can't draw.
std::string effectDescription(EffectMode mode, const Capabilities &capabilities);

// The note below the switch of the mouse's swipes.
std::string shakeNote(const Capabilities &capabilities);

// Gives every setting of the Shortcuts page its default.
void resetShortcutsToDefaults(SettingsStore &settings);

std::string updateResultText(const UpdateResult &result);

} // namespace lumo
