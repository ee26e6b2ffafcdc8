#include "app/AppDelegate.h"

#include "platform/Application.h"
#include "platform/MainLoop.h"
#include "platform/RemoteControl.h"
#include "platform/UserDefaults.h"
#include "presentation/SettingsTexts.h"

#include <utility>

namespace lumo {

namespace {

// Seconds. At login a window manager takes its time.
constexpr double longestWaitForPermission = 5;

} // namespace

AppDelegate::AppDelegate(const Platform &platform, UserInterface &userInterface)
    : platform_(platform)
    , userInterface_(userInterface) {
}

AppDelegate::~AppDelegate() {
    applicationWillTerminate();
}

void AppDelegate::applicationDidFinishLaunching() {
    platform_.application.setActivationPolicy(ActivationPolicy::accessory);
    appController_ = std::make_unique<AppController>(platform_, userInterface_);
    appController_->onOpenSettings = lifetime_.guard([this] { openSettings(); });
    appController_->updateManager().onResult = lifetime_.guard([this](const UpdateResult &result) {
        userInterface_.showMessage("Software Update", updateResultText(result));
    });
    reopening_ = platform_.application.onReopen([this] { applicationShouldHandleReopen(); });
    if (platform_.remoteControl != nullptr) {
        requests_ = platform_.remoteControl->onRequest(
            [this](const RemoteRequest &request) { return handleRequest(request); });
    }
    if (!appController_->settingsStore().hasCompletedOnboarding.value()) {
        showGuidanceWindow();
    } else if (isPermitted()) {
        appController_->launch();
    } else if (platform_.capabilities.permissionComesByItself) {
        awaitPermission();
    } else {
        showGuidanceWindow();
    }
}

bool AppDelegate::isPermitted() const {
    return appController_->permissionManager().hasAccessibilityPermission.value();
}

// The controller launches when the permission comes. Guidance that was shown for it alone ends
// then.
void AppDelegate::awaitPermission() {
    permission_ = appController_->permissionManager().hasAccessibilityPermission.subscribeToChanges(
        [this](const bool &isPermitted) {
            if (isPermitted) {
                guidanceDelay_.reset();
                guidanceWindow_.reset();
            }
        });
    guidanceDelay_ = platform_.mainLoop.after(longestWaitForPermission, [this] {
        if (!isPermitted()) {
            showGuidanceWindow();
        }
    });
}

void AppDelegate::applicationWillTerminate() {
    if (appController_) {
        appController_->overlayManager().stopShowing();
    }
}

bool AppDelegate::applicationShouldHandleReopen() {
    openSettings();
    return false;
}

// A program that was started by being activated has done by that what it is to do.
std::optional<std::string> AppDelegate::handleRequest(const RemoteRequest &request) {
    if (request.action != RemoteAction::activate) {
        return appController_->perform(request);
    }
    if (!request.hasStartedProgram) {
        applicationShouldHandleReopen();
    }
    return std::nullopt;
}

SettingsModel AppDelegate::settingsModel() {
    return {platform_,
            appController_->settingsStore(),
            appController_->shortcutManager(),
            appController_->selectedSettingsTab,
            appController_->launchAtLoginManager().refusal,
            [this] { appController_->setPrivacyCoverAppFromFrontmost(true); },
            [this](const std::optional<CoverAppChoice> &choice) {
                appController_->selectCoverApp(choice);
            }};
}

void AppDelegate::openSettings() {
    if (!appController_) {
        return;
    }
    if (!settingsWindow_) {
        settingsWindow_ = userInterface_.makeSettingsWindow(
            settingsModel(), lifetime_.guard([this] { settingsWindow_.reset(); }));
    }
    settingsWindow_->makeKeyAndOrderFront();
    platform_.application.activateIgnoringOtherApps();
}

void AppDelegate::showGuidanceWindow() {
    if (!appController_) {
        return;
    }
    guidanceWindow_ = userInterface_.makeGuidanceWindow(
        {platform_, appController_->settingsStore(), appController_->permissionManager(),
         lifetime_.guard([this] { beginAfterGuidance(); })},
        lifetime_.guard([this] { handleGuidanceWindowClosed(); }));
    guidanceWindow_->makeKeyAndOrderFront();
}

void AppDelegate::beginAfterGuidance() {
    endGuidance();
    appController_->setLumoEnabled(true);
}

// What the page would have told is told once, where nothing else shows that the program runs.
void AppDelegate::handleGuidanceWindowClosed() {
    auto &settings = appController_->settingsStore();
    const bool isFirst = !settings.hasCompletedOnboarding.value();
    endGuidance();
    if (isFirst && settings.hasCompletedOnboarding.value() && !settings.isEnabled.value()) {
        appController_->announceReadiness();
    }
}

void AppDelegate::endGuidance() {
    const auto closed = std::exchange(guidanceWindow_, nullptr);
    if (isPermitted()) {
        auto &onboarding = appController_->settingsStore().hasCompletedOnboarding;
        onboarding.set(true);
        platform_.userDefaults.setBool(onboarding.key(), true);
        appController_->launch();
    }
}

} // namespace lumo
