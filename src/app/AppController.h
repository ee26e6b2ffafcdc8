#pragma once

#include "app/LaunchAtLoginManager.h"
#include "app/MenuBarController.h"
#include "app/UpdateManager.h"
#include "input/MouseShakeToggleManager.h"
#include "input/ShortcutManager.h"
#include "overlay/OverlayManager.h"
#include "platform/Platform.h"
#include "presentation/UserInterface.h"
#include "settings/RulesEngine.h"
#include "settings/SettingsStore.h"
#include "settings/SettingsTab.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/NotificationCenter.h"
#include "support/Published.h"
#include "windows/PermissionManager.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

struct InputEvent;
struct RemoteRequest;
struct RunningApplication;

// Ties the program together: owns the settings and every manager, turns the effect on and off, runs
// the temporary reveal, chooses the Cover App, and reacts to shortcuts, shakes, the emergency keys
// and changes of the permission. Nothing else changes the managers' state. Main thread only.
class AppController {
  public:
    using SettingsTab = lumo::SettingsTab;

    // The user interface outlives the controller.
    AppController(const Platform &platform, UserInterface &userInterface);
    AppController(const AppController &) = delete;
    AppController &operator=(const AppController &) = delete;

    // True while the effect has been started.
    Published<bool> isReady{false};

    // "Lumo (On)", "Lumo (Off)" or "Lumo (Peek)".
    Published<std::string> statusMessage{"Lumo"};

    Published<SettingsTab> selectedSettingsTab{SettingsTab::general};

    // Opens the settings window on the selected page.
    std::function<void()> onOpenSettings;

    SettingsStore &settingsStore() { return settingsStore_; }
    PermissionManager &permissionManager() { return permissionManager_; }
    OverlayManager &overlayManager() { return overlayManager_; }
    ShortcutManager &shortcutManager() { return shortcutManager_; }
    LaunchAtLoginManager &launchAtLoginManager() { return launchAtLoginManager_; }
    UpdateManager &updateManager() { return updateManager_; }
    NotificationCenter &notificationCenter() { return notificationCenter_; }

    // Starts what onboarding and permission allow; without the permission it only asks for the
    // guidance. Harmless when everything runs already.
    void launch();

    // Turns the effect on or off, and remembers it. Turning on may first make the frontmost
    // application the Cover App, if the settings ask for that.
    void setLumoEnabled(bool enabled);

    // Reveals everything for the set duration; again while that runs starts the duration anew.
    // Nothing happens while the effect is off.
    void enterPeekMode();
    void exitPeekMode();

    // Makes the application that the user works in the Cover App and returns its display name;
    // absent when there is no such application.
    std::optional<std::string> setPrivacyCoverAppFromFrontmost(bool notify);

    // Sets the Cover App, or clears it when there is no bundle identifier.
    void setPrivacyCoverApp(std::optional<std::string> bundleID,
                            std::optional<std::string> displayName, bool notify);

    // The same for a choice of the user's, who is told.
    void selectCoverApp(const std::optional<CoverAppChoice> &choice);

    // Tells the user where the program is and how it is turned on, where the desktop has words for
    // that.
    void announceReadiness();

    // Selects the page and calls onOpenSettings in a later turn of the main loop.
    void openSettings(SettingsTab tab);

    // Does what another program asks for, but for activating, which is the delegate's. Returns why
    // not, absent when it was done.
    std::optional<std::string> perform(const RemoteRequest &request);

    // What accessibilityPermissionStatusChanged is answered with.
    void handlePermissionStatusChanged();

  private:
    void setupBindings();
    void listenToShortcuts();
    void handleShortcut(ShortcutEvent event);
    void handleShake(MouseShakeToggleManager::Action action);
    void setupEmergencyStop();
    void registerEmergencyHotKey();
    void emergencyStop();
    void runCoreFeatures(bool enabled);
    void notify(std::string title, std::string text);
    void startCoreFeatures();
    void stopCoreFeatures();
    void updateStatusMessage();
    std::optional<std::string> coverFrontmost();
    std::optional<std::string> cover(const std::string &bundleID);
    void showCoverRuntimeHint(const std::string &text, double duration);
    const RunningApplication *resolvedCoverCandidateApplication() const;

    Platform platform_;
    NotificationCenter notificationCenter_;
    SettingsStore settingsStore_;
    PermissionManager permissionManager_;
    RulesEngine rulesEngine_;
    OverlayManager overlayManager_;
    ShortcutManager shortcutManager_;
    MouseShakeToggleManager mouseShakeToggleManager_;
    LaunchAtLoginManager launchAtLoginManager_;
    UpdateManager updateManager_;
    std::vector<Subscription> cancellables_;
    Handle emergencyLocalMonitor_;
    Handle emergencyGlobalMonitor_;
    Handle emergencyHotKeyHandler_;
    Handle emergencyHotKey_;
    Handle peekTimer_;
    Handle coverRuntimeHintClearTimer_;
    std::optional<std::string> lastCoverRuntimeHintText_;
    double lastCoverRuntimeHintAt_ = 0;
    std::unique_ptr<MenuBarController> menuBarController_;
    Lifetime lifetime_;
};

} // namespace lumo
