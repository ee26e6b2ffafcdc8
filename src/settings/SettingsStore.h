#pragma once

#include "platform/Platform.h"
#include "settings/AppRule.h"
#include "settings/EffectMode.h"
#include "settings/MultiScreenMode.h"
#include "settings/Setting.h"
#include "support/Signal.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

class UserDefaults;

// Every user preference and a few run-time status values. One instance serves the whole program by
// reference. Main thread only.
//
// A setting's line is all there is to it: its name in code, its key in user defaults, its type and
// its default. Loading, writing and observation follow from it.
class SettingsStore {
    // What the properties below need while they are made, hence first.
    UserDefaults &userDefaults_;
    const Vocabulary &vocabulary_;
    std::vector<AnySetting *> settings_;

  public:
    // Loads every setting, and follows what others change.
    explicit SettingsStore(const Platform &platform);
    SettingsStore(const SettingsStore &) = delete;
    SettingsStore &operator=(const SettingsStore &) = delete;

    // Given before any property changes.
    Signal<> willChange;

    // Given after settings that others changed in the user defaults are stored here, each of which
    // was announced like any assignment.
    Signal<> didReload;

    // The focus effect is on.
    Setting<bool> isEnabled{*this, "isEnabled", false};
    Setting<EffectMode> effectMode{*this, "effectMode", EffectMode::softBlur};
    // 0 to 1.
    Setting<double> effectIntensity{*this, "effectIntensity", 0.6};
    // Keep the overlay's styling but use no blur.
    Setting<bool> blurFreeMode{*this, "blurFreeMode", false};
    // Seconds. Stored and edited only.
    Setting<double> transitionSpeed{*this, "transitionSpeed", 0.15};
    Setting<bool> launchAtLogin{*this, "launchAtLogin", false};
    // Stored and edited only.
    Setting<bool> pauseInFullscreen{*this, "pauseInFullscreen", false};
    // The mouse-shake gesture is active.
    Setting<bool> mouseShakeToggleEnabled{*this, "mouseShakeToggleEnabled", true};

    // The rule lists, and which of them is in force. Stored and edited only.
    Setting<std::vector<AppRule>> whitelist{*this, "whitelist", makeRules(vocabulary_.whitelist)};
    Setting<std::vector<AppRule>> blacklist{*this, "blacklist", makeRules(vocabulary_.blacklist)};
    Setting<bool> useWhitelistMode{*this, "useWhitelistMode", false};

    Setting<bool> privacyCoverEnabled{*this, "privacyCoverEnabled", false};
    // The chosen Cover App; absent while none is chosen.
    Setting<std::optional<std::string>> privacyCoverBundleID{*this, "privacyCoverBundleID", {}};
    Setting<std::optional<std::string>> privacyCoverDisplayName{
        *this, "privacyCoverDisplayName", {}};
    // Bring the Cover App forward when the effect is turned on.
    Setting<bool> privacyCoverBringForwardOnStart{*this, "privacyCoverBringForwardOnStart", true};
    // Keep trying to keep the Cover App on top.
    Setting<bool> privacyCoverKeepAbove{*this, "privacyCoverKeepAbove", false};
    // Take the frontmost application as Cover App when none is set as the effect is turned on.
    Setting<bool> privacyCoverAutoAssignOnEnable{*this, "privacyCoverAutoAssignOnEnable", true};
    // How long the Cover App's window stays locked as focus target, in seconds.
    Setting<double> coverWindowLockDuration{*this, "coverWindowLockDuration", 0.35};

    Setting<MultiScreenMode> multiScreenMode{*this, "multiScreenMode", MultiScreenMode::perScreen};
    // Length of a Peek, in seconds.
    Setting<double> peekDuration{*this, "peekDuration", 2.0};

    // Hot keys: a virtual key code and a sum of 512 Shift, 1024 Command, 2048 Option, 4096 Control.
    Setting<std::int64_t> toggleShortcutKey{*this, "toggleShortcutKey", 49};
    Setting<bool> toggleShortcutEnabled{*this, "toggleShortcutEnabled", true};
    Setting<std::int64_t> toggleShortcutModifiers{*this, "toggleShortcutModifiers", 4096};
    Setting<std::int64_t> turnOnShortcutKey{*this, "turnOnShortcutKey", 9};
    Setting<bool> turnOnShortcutEnabled{*this, "turnOnShortcutEnabled", true};
    Setting<std::int64_t> turnOnShortcutModifiers{*this, "turnOnShortcutModifiers", 6144};
    Setting<std::int64_t> turnOffShortcutKey{*this, "turnOffShortcutKey", 45};
    Setting<bool> turnOffShortcutEnabled{*this, "turnOffShortcutEnabled", true};
    Setting<std::int64_t> turnOffShortcutModifiers{*this, "turnOffShortcutModifiers", 6144};
    Setting<std::int64_t> peekShortcutKey{*this, "peekShortcutKey", 48};
    Setting<bool> peekShortcutEnabled{*this, "peekShortcutEnabled", true};
    Setting<std::int64_t> peekShortcutModifiers{*this, "peekShortcutModifiers", 3072};
    Setting<std::int64_t> coverSetShortcutKey{*this, "coverSetShortcutKey", 8};
    Setting<bool> coverSetShortcutEnabled{*this, "coverSetShortcutEnabled", true};
    Setting<std::int64_t> coverSetShortcutModifiers{*this, "coverSetShortcutModifiers", 3072};

    // 0 to 1. Stored and edited only.
    Setting<double> shakeSensitivity{*this, "shakeSensitivity", 0.85};
    // A shake with the toggle modifier toggles the effect, one with the peek modifier starts a
    // Peek.
    Setting<bool> shakeToggleActionEnabled{*this, "shakeToggleActionEnabled", true};
    Setting<bool> shakeToReveal{*this, "shakeToReveal", true};
    Setting<std::string> shakePeekModifier{*this, "shakePeekModifier", "Shift"};
    Setting<std::string> shakeToggleModifier{*this, "shakeToggleModifier", "None"};

    // The permission guidance has been finished once. Written when that window closes.
    Setting<bool> hasCompletedOnboarding{*this, "hasCompletedOnboarding", false, WriteBack::never};

    // Run-time values, never kept.

    // A Peek is in progress.
    SettingsProperty<bool> isPeeking{*this, false};
    // One line on the state of the Privacy Cover, and a hint to show beside it.
    SettingsProperty<std::string> privacyCoverRuntimeStatus{*this, "Off"};
    SettingsProperty<std::optional<std::string>> privacyCoverRuntimeHint{*this, std::nullopt};

    // Every setting above, in that order; the run-time values are not among them.
    const std::vector<AnySetting *> &settings() const { return settings_; }

  private:
    template <class T>
    friend class Setting;

    void replaceOldPeekShortcut();
    void reload(const std::vector<std::string> &keys);

    Handle changesByOthers_;
};

} // namespace lumo
