#include "presentation/StatusMenu.h"

#include "platform/Keyboard.h"
#include "platform/MainLoop.h"
#include "platform/Vocabulary.h"
#include "platform/Workspace.h"
#include "presentation/SettingsTexts.h"
#include "presentation/Shortcuts.h"
#include "settings/CoverLockPreset.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace lumo {

namespace {

constexpr std::string_view separator = " · ";

std::string asciiLowercased(std::string text) {
    std::ranges::transform(text, text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return text;
}

} // namespace

StatusMenu::StatusMenu(const Platform &platform, SettingsStore &settings, StatusMenuActions actions)
    : platform_(platform)
    , settings_(settings)
    , actions_(std::move(actions))
    , settingsChanges_(settings.willChange.subscribe([this] { announceChange(); }))
    , keyNameChanges_(platform.keyboard.onNamesDidChange([this] { announceChange(); })) {
}

Handle StatusMenu::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

// Later, since the settings announce a change before they hold it. The effect writes one of them
// at every tick: while nothing is shown, that must not cost a turn of the main loop each time.
void StatusMenu::announceChange() {
    if (changed_.isObserved() && !std::exchange(isChangeAnnounced_, true)) {
        platform_.mainLoop.post(lifetime_.guard([this] {
            isChangeAnnounced_ = false;
            changed_.emit();
        }));
    }
}

void StatusMenu::setPage(Page page) {
    page_ = page;
    announceChange();
}

bool StatusMenu::hasCoverApp() const {
    return !settings_.privacyCoverBundleID.value().value_or("").empty();
}

bool StatusMenu::isCoverApp(const CoverAppChoice &choice) const {
    return settings_.privacyCoverBundleID.value() == choice.bundleID;
}

bool StatusMenu::isCoverAppInFront() const {
    const auto *front = platform_.workspace.frontmostApplication();
    return front != nullptr && settings_.privacyCoverEnabled.value() && hasCoverApp() &&
           front->bundleIdentifier == settings_.privacyCoverBundleID.value();
}

bool StatusMenu::isOn() const {
    return settings_.isEnabled.value();
}

std::string StatusMenu::header() const {
    return isOn() ? "Lumo is On" : "Lumo is Off";
}

std::string StatusMenu::toggleTitle() const {
    return isOn() ? "Turn Lumo Off" : "Turn Lumo On";
}

std::string StatusMenu::setCoverSubtitle() const {
    if (!hasCoverApp()) {
        return "Enable Privacy Cover with current app";
    }
    return "Current: " + (platform_.vocabulary.appNaming == AppNaming::displayName
                              ? coverAppName(platform_, settings_)
                              : settings_.privacyCoverBundleID.value().value_or(""));
}

std::optional<std::string> StatusMenu::toggleShortcutLabel() const {
    if (!platform_.vocabulary.showsAllShortcutsInMenu || !settings_.toggleShortcutEnabled.value()) {
        return std::nullopt;
    }
    return shortcutLabel(platform_, settings_.toggleShortcutKey.value(),
                         settings_.toggleShortcutModifiers.value());
}

std::optional<std::string> StatusMenu::peekShortcutLabel() const {
    if (!platform_.vocabulary.showsAllShortcutsInMenu || !settings_.peekShortcutEnabled.value()) {
        return std::nullopt;
    }
    return shortcutLabel(platform_, settings_.peekShortcutKey.value(),
                         settings_.peekShortcutModifiers.value());
}

std::optional<std::string> StatusMenu::setCoverShortcutLabel() const {
    if (!settings_.coverSetShortcutEnabled.value()) {
        return std::nullopt;
    }
    return shortcutLabel(platform_, settings_.coverSetShortcutKey.value(),
                         settings_.coverSetShortcutModifiers.value());
}

std::string StatusMenu::chooseCoverSubtitle() const {
    const bool isNamed = platform_.vocabulary.appNaming == AppNaming::displayName;
    const auto name = isNamed ? coverAppName(platform_, settings_)
                              : settings_.privacyCoverDisplayName.value().value_or("");
    return name.empty() ? "Pick from running apps" : "Selected: " + name;
}

std::string StatusMenu::shortcutSummary() const {
    return "Toggle " +
           shortcutLabel(platform_, settings_.toggleShortcutKey.value(),
                         settings_.toggleShortcutModifiers.value()) +
           ", Peek(temp) " +
           shortcutLabel(platform_, settings_.peekShortcutKey.value(),
                         settings_.peekShortcutModifiers.value());
}

std::string StatusMenu::privacyCoverSummary() const {
    if (!settings_.privacyCoverEnabled.value()) {
        return "Off";
    }
    auto summary = privacyCoverStatus(settings_);
    summary += separator;
    summary += millisecondsText(settings_.coverWindowLockDuration.value()) + "ms lock";
    if (const auto hint = settings_.privacyCoverRuntimeHint.value().value_or(""); !hint.empty()) {
        summary += separator;
        summary += hint;
    }
    return summary;
}

bool StatusMenu::showCoverWarning() const {
    if (!settings_.privacyCoverEnabled.value()) {
        return false;
    }
    constexpr std::array<std::string_view, 3> troubles{"fallback", "no cover app", "unavailable"};
    const auto status = asciiLowercased(privacyCoverStatus(settings_));
    return std::ranges::any_of(troubles, [&status](std::string_view trouble) {
        return status.find(trouble) != std::string::npos;
    });
}

StatusMenu::CoverNotice StatusMenu::coverNotice() const {
    if (showCoverWarning()) {
        return CoverNotice::warning;
    }
    const bool hasHint = !settings_.privacyCoverRuntimeHint.value().value_or("").empty();
    return settings_.privacyCoverEnabled.value() && hasHint ? CoverNotice::info : CoverNotice::none;
}

std::string StatusMenu::coverNoticeText() const {
    switch (coverNotice()) {
    case CoverNotice::warning:
        return privacyCoverStatus(settings_);
    case CoverNotice::info:
        return settings_.privacyCoverRuntimeHint.value().value_or("");
    case CoverNotice::none:
        break;
    }
    return {};
}

void StatusMenu::chooseCoverApp() {
    refreshRunningApps();
    setPage(Page::coverApps);
}

void StatusMenu::selectCoverApp(const std::optional<CoverAppChoice> &choice) {
    actions_.onSelectCoverApp(choice);
    setPage(Page::main);
}

void StatusMenu::refreshRunningApps() {
    runningApps_ = coverAppChoices(platform_, settings_);
    announceChange();
}

void StatusMenu::prepareToShow() {
    page_ = Page::main;
    refreshRunningApps();
}

} // namespace lumo
