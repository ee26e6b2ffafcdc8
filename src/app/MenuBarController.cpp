#include "app/MenuBarController.h"

#include "app/AppController.h"
#include "platform/Application.h"
#include "platform/MainLoop.h"

#include <utility>

namespace lumo {

namespace {

constexpr Color gray(double white) {
    return {white, white, white, 1};
}

constexpr Color colorWhenOn = gray(0.28);
constexpr Color colorWhenOff = gray(1);

} // namespace

MenuBarController::MenuBarController(const Platform &platform, UserInterface &userInterface,
                                     AppController &appController)
    : platform_(platform)
    , userInterface_(userInterface)
    , appController_(appController)
    , statusItem_(platform.statusItem) {
    statusItem_.setToolTip("Lumo - Focus and privacy");
    clicks_ = statusItem_.onRightMouseUp(
        [this](const StatusItemPlace &place) { handleStatusItemClick(place); });
    updateTitle();
    setupPopover();
    setupBindings();
}

void MenuBarController::updateTitle() {
    const bool isOn = appController_.settingsStore().isEnabled.value();
    statusItem_.setTitle({"\u25CF", isOn ? colorWhenOn : colorWhenOff, 15, true, -0.5});
}

// The status message as well, since a setting announces its new value before it holds it.
void MenuBarController::setupBindings() {
    cancellables_.push_back(appController_.settingsStore().isEnabled.subscribe(
        [this](const bool &) { updateTitle(); }));
    cancellables_.push_back(
        appController_.statusMessage.subscribe([this](const std::string &) { updateTitle(); }));
}

void MenuBarController::setupPopover() {
    menu_ = std::make_unique<StatusMenu>(platform_, appController_.settingsStore(), menuActions());
    popover_ = userInterface_.makePopover(*menu_);
}

StatusMenuActions MenuBarController::menuActions() {
    auto &settings = appController_.settingsStore();
    const auto closing = [this](std::function<void()> action) {
        return [this, action = std::move(action)] {
            action();
            popover_->close();
        };
    };
    return {
        .onToggle = closing(
            [this, &settings] { appController_.setLumoEnabled(!settings.isEnabled.value()); }),
        .onPeek = closing([this] { appController_.enterPeekMode(); }),
        .onSettings = [this] { openSettingsLater(SettingsTab::general); },
        .onCheckForUpdates = closing([this] { appController_.updateManager().checkForUpdates(); }),
        .onShortcuts = [this] { openSettingsLater(SettingsTab::shortcuts); },
        .onPrivacyCover = [this] { openSettingsLater(SettingsTab::rules); },
        .onSetCoverFromFrontmost = closing([this, &settings] {
            appController_.setPrivacyCoverAppFromFrontmost(true);
            settings.privacyCoverEnabled.set(true);
        }),
        .onSelectCoverApp =
            [this, &settings](const std::optional<CoverAppChoice> &choice) {
                appController_.selectCoverApp(choice);
                if (choice) {
                    settings.privacyCoverEnabled.set(true);
                }
            },
        .onQuit =
            [this] {
                popover_->close();
                platform_.application.terminate();
            },
    };
}

// Later, so that the popover is gone by then.
void MenuBarController::openSettingsLater(SettingsTab tab) {
    popover_->close();
    platform_.mainLoop.post(lifetime_.guard([this, tab] { appController_.openSettings(tab); }));
}

void MenuBarController::handleStatusItemClick(const StatusItemPlace &place) {
    if (popover_->isShown()) {
        popover_->close();
    } else {
        popover_->show(place);
    }
}

} // namespace lumo
