#pragma once

#include "input/ShortcutManager.h"
#include "overlay/OverlayManager.h"
#include "platform/Platform.h"
#include "settings/RulesEngine.h"
#include "settings/SettingsStore.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"

#include <optional>
#include <string>
#include <vector>

namespace lumo {

struct RunningApplication;

// Ties the program together: owns the settings and every manager, turns the effect on and off, runs
// the temporary reveal, and chooses the Cover App. Nothing else changes their state. Main thread
// only.
class AppController {
  public:
    explicit AppController(const Platform &platform);
    AppController(const AppController &) = delete;
    AppController &operator=(const AppController &) = delete;

    // True while the effect has been started.
    Published<bool> isReady{false};

    // "Lumo (On)", "Lumo (Off)" or "Lumo (Peek)".
    Published<std::string> statusMessage{"Lumo"};

    SettingsStore &settingsStore() { return settingsStore_; }
    OverlayManager &overlayManager() { return overlayManager_; }

    // Turns the effect on or off, and remembers it. Turning on may first make the frontmost
    // application the Cover App, if the settings ask for that.
    void setLumoEnabled(bool enabled);

    // Reveals everything for the set duration; again while that runs starts the duration anew.
    // Nothing happens while the effect is off.
    void enterPeekMode();
    void exitPeekMode();

    // Makes the application that the user works in the Cover App and answers with its display name;
    // absent when there is no such application.
    std::optional<std::string> setPrivacyCoverAppFromFrontmost(bool notify);

    // Sets the Cover App, or clears it when there is no bundle identifier.
    void setPrivacyCoverApp(std::optional<std::string> bundleID,
                            std::optional<std::string> displayName, bool notify);

  private:
    void setupBindings();
    void listenToShortcuts();
    void handleShortcut(ShortcutEvent event);
    void startCoreFeatures();
    void stopCoreFeatures();
    void updateStatusMessage();
    void showCoverRuntimeHint(const std::string &text, double duration);
    const RunningApplication *resolvedCoverCandidateApplication() const;

    Platform platform_;
    SettingsStore settingsStore_;
    RulesEngine rulesEngine_;
    OverlayManager overlayManager_;
    ShortcutManager shortcutManager_;
    std::vector<Subscription> cancellables_;
    Handle peekTimer_;
    Handle coverRuntimeHintClearTimer_;
    std::optional<std::string> lastCoverRuntimeHintText_;
    double lastCoverRuntimeHintAt_ = 0;
    Lifetime lifetime_;
};

} // namespace lumo
