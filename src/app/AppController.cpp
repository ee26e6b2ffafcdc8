#include "app/AppController.h"

#include "platform/Accessibility.h"
#include "platform/EventMonitors.h"
#include "platform/MainLoop.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotifications.h"
#include "platform/Vocabulary.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"
#include "presentation/Shortcuts.h"
#include "settings/AppRule.h"
#include "support/Log.h"
#include "windows/OrdinaryWindow.h"

namespace lumo {

namespace {

constexpr double hintDuration = 4.0;       // seconds
constexpr double hintRepeatInterval = 1.5; // seconds in which a repeated hint is dropped
constexpr double smallestCandidate = 40;   // points, of either side of a window

constexpr std::uint16_t keyD = 2; // the virtual key code

// Control, Option and Command with D, and nothing else.
bool areEmergencyKeys(const InputEvent &event) {
    constexpr std::uint32_t modifiers =
        modifierFlag::control | modifierFlag::option | modifierFlag::command;
    return (event.modifierFlags & modifierFlag::deviceIndependent) == modifiers &&
           event.keyCode == keyD;
}

} // namespace

AppController::AppController(const Platform &platform, UserInterface &userInterface)
    : platform_(platform)
    , settingsStore_(platform)
    , permissionManager_(platform, notificationCenter_)
    , rulesEngine_(settingsStore_)
    , overlayManager_(platform, settingsStore_)
    , shortcutManager_(platform, settingsStore_)
    , mouseShakeToggleManager_(platform, settingsStore_)
    , launchAtLoginManager_(platform)
    , updateManager_(platform) {
    setupBindings();
    menuBarController_ = std::make_unique<MenuBarController>(platform, userInterface, *this);
    permissionManager_.checkPermission();
    cancellables_.push_back(notificationCenter_.addObserver(
        accessibilityPermissionStatusChanged, [this] { handlePermissionStatusChanged(); }));
    cancellables_.push_back(platform.accessibility.onProcessTrustDidChange(
        [this] { permissionManager_.checkPermission(); }));
    setupEmergencyStop();
    listenToShortcuts();
}

void AppController::setupBindings() {
    cancellables_.push_back(settingsStore_.isEnabled.subscribe([this](const bool &enabled) {
        runCoreFeatures(enabled);
        updateStatusMessage();
    }));
    // The announcement above comes before the setting holds the value that starting looks at.
    cancellables_.push_back(settingsStore_.didReload.subscribe(
        [this] { runCoreFeatures(settingsStore_.isEnabled.value()); }));
    shortcutManager_.onShortcutTriggered = [this](ShortcutEvent event) { handleShortcut(event); };
    mouseShakeToggleManager_.onShakeAction = [this](auto action) { handleShake(action); };
    cancellables_.push_back(settingsStore_.launchAtLogin.subscribe([this](const bool &launches) {
        if (!launches) {
            launchAtLoginManager_.disable();
        } else if (!launchAtLoginManager_.enable()) {
            // Later, since the setting does not hold its value yet.
            platform_.mainLoop.post(
                lifetime_.guard([this] { settingsStore_.launchAtLogin.set(false); }));
        }
    }));
}

void AppController::listenToShortcuts() {
    if (!shortcutManager_.isListening.value()) {
        shortcutManager_.installHotKeyHandlerIfNeeded();
        shortcutManager_.registerHotKeys();
        shortcutManager_.isListening.set(true);
    }
}

void AppController::handleShortcut(ShortcutEvent event) {
    switch (event) {
    case ShortcutEvent::toggle:
        setLumoEnabled(!settingsStore_.isEnabled.value());
        break;
    case ShortcutEvent::peek:
        enterPeekMode();
        break;
    case ShortcutEvent::setCoverFromFrontmost:
        coverFrontmost();
        break;
    }
}

void AppController::handleShake(MouseShakeToggleManager::Action action) {
    switch (action) {
    case MouseShakeToggleManager::Action::toggle:
        setLumoEnabled(!settingsStore_.isEnabled.value());
        break;
    case MouseShakeToggleManager::Action::peek:
        enterPeekMode();
        break;
    }
}

void AppController::setupEmergencyStop() {
    emergencyLocalMonitor_ = platform_.eventMonitors.addLocalMonitor(
        eventMask(EventType::keyDown), [this](const InputEvent &event) {
            if (!areEmergencyKeys(event)) {
                return false;
            }
            emergencyStop();
            return true;
        });
    emergencyGlobalMonitor_ = platform_.eventMonitors.addGlobalMonitor(
        eventMask(EventType::keyDown), [this](const InputEvent &event) {
            if (areEmergencyKeys(event)) {
                emergencyStop();
            }
        });
    if (!platform_.capabilities.globalKeyMonitors) {
        registerEmergencyHotKey();
    }
}

// The lesser way: no other program sees the keys then.
void AppController::registerEmergencyHotKey() {
    const HotKeyID id{fourCC("LUME"), 9};
    emergencyHotKeyHandler_ =
        platform_.hotKeyService.installEventHandler([this, id](const HotKeyEvent &event) {
            if (event.id == id && event.kind == HotKeyEventKind::pressed) {
                platform_.mainLoop.post(lifetime_.guard([this] { emergencyStop(); }));
            }
        });
    emergencyHotKey_ = platform_.hotKeyService.registerHotKey(
        keyD, hotKeyModifier::control | hotKeyModifier::option | hotKeyModifier::command, id,
        [this](HotKeyStatus status) {
            if (status != HotKeyStatus::success) {
                platform_.log.print("[Lumo] Emergency stop hotkey registration failed, " +
                                    describe(status));
            }
        });
}

// A peek that runs is left to its timer.
void AppController::emergencyStop() {
    settingsStore_.isEnabled.set(false);
    stopCoreFeatures();
    notify("Lumo Emergency Stop", "Lumo effects have been safely turned off.");
}

void AppController::announceReadiness() {
    const auto &words = platform_.vocabulary.firstStart;
    if (words.readyTitle.empty()) {
        return;
    }
    constexpr std::string_view keys = "{toggle}";
    std::string text(words.readyText);
    if (const auto at = text.find(keys); at != std::string::npos) {
        text.replace(at, keys.size(), joinedKeys(platform_, toggleKeys(platform_, settingsStore_)));
    }
    notify(std::string(words.readyTitle), std::move(text));
}

void AppController::notify(std::string title, std::string text) {
    platform_.userNotifications.add(
        {makeUUID(), std::move(title), std::move(text)},
        lifetime_.guard([this](const std::optional<std::string> &error) {
            if (error) {
                platform_.log.print("[Lumo] Failed to send notification: " + *error);
            }
        }));
}

void AppController::launch() {
    const bool isPermitted = permissionManager_.hasAccessibilityPermission.value();
    if (isPermitted && settingsStore_.hasCompletedOnboarding.value()) {
        listenToShortcuts();
        startCoreFeatures();
    } else if (!isPermitted) {
        permissionManager_.isShowingGuidance.set(true);
    }
}

void AppController::handlePermissionStatusChanged() {
    if (permissionManager_.hasAccessibilityPermission.value()) {
        launch();
    }
}

void AppController::openSettings(SettingsTab tab) {
    selectedSettingsTab.set(tab);
    platform_.mainLoop.post(lifetime_.guard([this] {
        if (onOpenSettings) {
            onOpenSettings();
        }
    }));
}

void AppController::runCoreFeatures(bool enabled) {
    if (enabled) {
        startCoreFeatures();
    } else {
        stopCoreFeatures();
    }
}

void AppController::startCoreFeatures() {
    if (settingsStore_.isEnabled.value()) {
        overlayManager_.startShowing();
        isReady.set(true);
        updateStatusMessage();
    }
}

void AppController::stopCoreFeatures() {
    overlayManager_.stopShowing();
    isReady.set(false);
    updateStatusMessage();
}

void AppController::setLumoEnabled(bool enabled) {
    if (enabled && settingsStore_.privacyCoverEnabled.value() &&
        settingsStore_.privacyCoverAutoAssignOnEnable.value() &&
        !settingsStore_.privacyCoverBundleID.value()) {
        if (const auto name = setPrivacyCoverAppFromFrontmost(false)) {
            showCoverRuntimeHint("Auto-set Cover: " + *name, hintDuration);
        }
    }
    if (settingsStore_.isEnabled.value() != enabled) {
        settingsStore_.isEnabled.set(enabled);
    }
    runCoreFeatures(enabled);
    updateStatusMessage();
}

void AppController::enterPeekMode() {
    if (!settingsStore_.isEnabled.value()) {
        return;
    }
    overlayManager_.peek();
    peekTimer_ = platform_.mainLoop.after(settingsStore_.peekDuration.value(),
                                          lifetime_.guard([this] { exitPeekMode(); }));
    settingsStore_.isPeeking.set(true);
    updateStatusMessage();
}

void AppController::exitPeekMode() {
    overlayManager_.endPeek();
    peekTimer_.reset();
    settingsStore_.isPeeking.set(false);
    updateStatusMessage();
}

void AppController::updateStatusMessage() {
    if (settingsStore_.isPeeking.value()) {
        statusMessage.set("Lumo (Peek)");
    } else {
        statusMessage.set(settingsStore_.isEnabled.value() ? "Lumo (On)" : "Lumo (Off)");
    }
}

const RunningApplication *AppController::resolvedCoverCandidateApplication() const {
    const auto &workspace = platform_.workspace;
    const auto *frontmost = workspace.frontmostApplication();
    const auto &own = workspace.ownApplication();
    if (frontmost == nullptr || frontmost->bundleIdentifier != own.bundleIdentifier) {
        return frontmost;
    }
    // Lumo's own window is in front: the application behind it is the one that is meant.
    const auto records = platform_.windowServer.onScreenWindows();
    if (!records) {
        return nullptr;
    }
    for (const auto &record : *records) {
        const auto process = ownerOfOrdinaryWindow(record, smallestCandidate);
        if (process && *process != own.processIdentifier) {
            if (const auto *application = workspace.runningApplication(*process)) {
                return application;
            }
        }
    }
    return nullptr;
}

std::optional<std::string> AppController::setPrivacyCoverAppFromFrontmost(bool notify) {
    const auto *candidate = resolvedCoverCandidateApplication();
    if (candidate == nullptr || !candidate->bundleIdentifier) {
        return std::nullopt;
    }
    const auto bundleID = *candidate->bundleIdentifier;
    const auto name = candidate->localizedName.value_or(bundleID);
    settingsStore_.privacyCoverBundleID.set(bundleID);
    settingsStore_.privacyCoverDisplayName.set(name);
    if (notify) {
        showCoverRuntimeHint("Cover set: " + name, hintDuration);
    }
    return name;
}

void AppController::setPrivacyCoverApp(std::optional<std::string> bundleID,
                                       std::optional<std::string> displayName, bool notify) {
    const bool clears = !bundleID;
    const auto hint = displayName && !displayName->empty() ? "Cover set: " + *displayName
                                                           : std::string("Cover cleared");
    settingsStore_.privacyCoverBundleID.set(std::move(bundleID));
    settingsStore_.privacyCoverDisplayName.set(std::move(displayName));
    if (clears) {
        settingsStore_.privacyCoverAutoAssignOnEnable.set(false);
    }
    if (notify) {
        showCoverRuntimeHint(hint, hintDuration);
    }
}

void AppController::selectCoverApp(const std::optional<CoverAppChoice> &choice) {
    if (choice) {
        setPrivacyCoverApp(choice->bundleID, choice->displayName, true);
    } else {
        setPrivacyCoverApp(std::nullopt, std::nullopt, true);
    }
}

void AppController::showCoverRuntimeHint(const std::string &text, double duration) {
    const double now = platform_.mainLoop.now();
    if (lastCoverRuntimeHintText_ == text && now - lastCoverRuntimeHintAt_ < hintRepeatInterval) {
        return;
    }
    lastCoverRuntimeHintText_ = text;
    lastCoverRuntimeHintAt_ = now;
    settingsStore_.privacyCoverRuntimeHint.set(text);
    coverRuntimeHintClearTimer_ = platform_.mainLoop.after(
        duration, lifetime_.guard([this] { settingsStore_.privacyCoverRuntimeHint.set({}); }));
}

} // namespace lumo
