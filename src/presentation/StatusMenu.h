#pragma once

#include "platform/Platform.h"
#include "presentation/CoverAppChoice.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

class SettingsStore;

// What the popover's rows do, given by its owner. None is empty.
struct StatusMenuActions {
    std::function<void()> onToggle;
    std::function<void()> onPeek;
    std::function<void()> onSettings;
    std::function<void()> onCheckForUpdates;
    std::function<void()> onShortcuts;
    std::function<void()> onPrivacyCover;
    std::function<void()> onSetCoverFromFrontmost;
    // Nothing clears the selection.
    std::function<void(const std::optional<CoverAppChoice> &)> onSelectCoverApp;
    std::function<void()> onQuit;
};

// What the status item's popover says and offers. The view draws it and calls its functions; every
// text follows the settings. Main thread only.
class StatusMenu {
  public:
    enum class Page { main, settings, coverApps };

    // The line that tells of trouble with the Privacy Cover, or of something worth knowing.
    enum class CoverNotice { none, warning, info };

    // The settings outlive the menu.
    StatusMenu(const Platform &platform, SettingsStore &settings, StatusMenuActions actions);
    StatusMenu(const StatusMenu &) = delete;
    StatusMenu &operator=(const StatusMenu &) = delete;

    // Calls the observer, in a later turn and once for all changes of a turn, when anything below
    // may return something else.
    Handle onChange(std::function<void()> observer);

    SettingsStore &settings() { return settings_; }
    Page page() const { return page_; }
    const std::vector<CoverAppChoice> &runningApps() const { return runningApps_; }
    bool hasCoverApp() const;
    bool isCoverApp(const CoverAppChoice &choice) const;
    // Which is where the program itself brings it, when it is chosen or the cover is turned on.
    bool isCoverAppInFront() const;

    bool isOn() const;
    std::string header() const;
    std::string toggleTitle() const;
    std::string setCoverSubtitle() const;
    // Absent for those that are turned off, and for the first two where the desktop does not show
    // them.
    std::optional<std::string> toggleShortcutLabel() const;
    std::optional<std::string> peekShortcutLabel() const;
    std::optional<std::string> setCoverShortcutLabel() const;
    std::string chooseCoverSubtitle() const;
    std::string shortcutSummary() const;
    std::string privacyCoverSummary() const;
    bool showCoverWarning() const;
    CoverNotice coverNotice() const;
    std::string coverNoticeText() const;
    bool canCheckForUpdates() const { return platform_.capabilities.updates; }

    // The rows that stay on the popover.
    void showMain() { setPage(Page::main); }
    void showSettings() { setPage(Page::settings); }
    void chooseCoverApp();
    void fixCover() { chooseCoverApp(); }
    void selectCoverApp(const std::optional<CoverAppChoice> &choice);
    void refreshRunningApps();

    // The popover was opened anew.
    void prepareToShow();

    // The others.
    const StatusMenuActions &actions() const { return actions_; }

  private:
    void setPage(Page page);
    void announceChange();

    Platform platform_;
    SettingsStore &settings_;
    StatusMenuActions actions_;
    Page page_ = Page::main;
    std::vector<CoverAppChoice> runningApps_;
    Signal<> changed_;
    bool isChangeAnnounced_ = false;
    Handle settingsChanges_;
    Handle keyNameChanges_;
    Lifetime lifetime_;
};

} // namespace lumo
