#include "presentation/SettingsTexts.h"

#include "platform/Platform.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace lumo {

namespace {

std::string decimalText(double number, int decimals) {
    std::array<char, 400> text{};
    // Adding zero turns a negative zero into a plain one.
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number + 0.0);
    return text.data();
}

template <class... Settings>
void setToDefault(Settings &...settings) {
    (settings.set(settings.defaultValue()), ...);
}

} // namespace

std::string percentText(double fraction) {
    return decimalText(std::round(fraction * 100), 0) + "%";
}

std::string secondsText(double seconds) {
    const double tenths = seconds * 10;
    const bool needsHundredths = std::abs(tenths - std::round(tenths)) > 1e-6;
    return decimalText(seconds, needsHundredths ? 2 : 1) + " s";
}

std::string shortcutNote(std::string_view note, bool isTaken) {
    constexpr std::string_view taken = "In use by another program.";
    std::string text(note);
    if (isTaken) {
        text.append(note.empty() ? "" : " ").append(taken);
    }
    return text;
}

std::string effectDescription(EffectMode mode, const Capabilities &capabilities) {
    std::string text(description(mode));
    if (mode == EffectMode::softBlur && !capabilities.liveBackdrop) {
        text += " This desktop can't blur: the tint and the grain remain.";
    }
    return text;
}

std::string shakeNote(const Capabilities &capabilities) {
    return capabilities.globalPointerMonitors
               ? "Quickly move the mouse left and right four times to turn Lumo on or off."
               : "This desktop tells no program where the mouse is: no swipes.";
}

std::string_view ruleModeExplanation(bool useWhitelistMode) {
    return useWhitelistMode ? "Only whitelisted apps will be affected by Lumo."
                            : "Blacklisted apps will not be affected by Lumo.";
}

std::string selectedCoverAppName(const Platform &platform, const SettingsStore &settings,
                                 const std::vector<CoverAppChoice> &available) {
    const auto &bundleID = settings.privacyCoverBundleID.value();
    const auto entry = std::ranges::find_if(
        available, [&](const CoverAppChoice &choice) { return choice.bundleID == bundleID; });
    if (entry != available.end()) {
        return entry->displayName;
    }
    const auto name = coverAppName(platform, settings);
    return name.empty() ? "None" : name;
}

std::string privacyCoverStatus(const SettingsStore &settings) {
    const auto &status = settings.privacyCoverRuntimeStatus.value();
    if (!settings.privacyCoverEnabled.value() || status != "Off") {
        return status;
    }
    return settings.privacyCoverBundleID.value().value_or("").empty() ? "No Cover App selected"
                                                                      : "Ready";
}

bool shouldShowCoverConflictHint(const SettingsStore &settings) {
    return settings.privacyCoverEnabled.value() &&
           settings.multiScreenMode.value() == MultiScreenMode::perScreen &&
           settings.privacyCoverBundleID.value().has_value();
}

void resetShortcutsToDefaults(SettingsStore &settings) {
    setToDefault(settings.toggleShortcutEnabled, settings.toggleShortcutKey,
                 settings.toggleShortcutModifiers, settings.peekShortcutEnabled,
                 settings.peekShortcutKey, settings.peekShortcutModifiers,
                 settings.coverSetShortcutEnabled, settings.coverSetShortcutKey,
                 settings.coverSetShortcutModifiers, settings.mouseShakeToggleEnabled,
                 settings.shakeToggleActionEnabled, settings.shakeToggleModifier,
                 settings.shakeToReveal, settings.shakePeekModifier, settings.shakeSensitivity);
}

std::string updateResultText(const UpdateResult &result) {
    switch (result.kind) {
    case UpdateResult::Kind::upToDate:
        return "Lumo is up to date.";
    case UpdateResult::Kind::newerVersion:
        return "Version " + result.version +
               " is available. Your system's software updates will install it.";
    case UpdateResult::Kind::notInstalledByPackage:
        return "Lumo was not installed by a package, so the system can't tell about updates.";
    case UpdateResult::Kind::serviceUnavailable:
        break;
    }
    return "The system's package service is not available.";
}

} // namespace lumo
