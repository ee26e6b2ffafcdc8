#pragma once

#include "platform/StatusItem.h"
#include "presentation/StatusMenu.h"
#include "settings/SettingsTab.h"
#include "support/Published.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace lumo {

class PermissionManager;
class ShortcutManager;

// The popover of the status item, 260 x 300 points. Closes by itself when the user acts outside of
// it, presses Escape, or another window gets the focus. Main thread only.
class Popover {
  public:
    virtual ~Popover() = default;

    virtual bool isShown() const = 0;

    // Shows it below the item, or above it where there is no room, and at the pointer where the
    // item's place is unknown; always wholly on one screen.
    virtual void show(const StatusItemPlace &place) = 0;

    virtual void close() = 0;
};

// A window of the program with a title bar. Closed on destruction, without a word. Main thread
// only.
class InterfaceWindow {
  public:
    virtual ~InterfaceWindow() = default;

    virtual void makeKeyAndOrderFront() = 0;
};

// What the settings window needs besides the settings. All references outlive the window.
struct SettingsModel {
    Platform platform;
    SettingsStore &settings;
    ShortcutManager &shortcuts;
    Published<SettingsTab> &selectedTab;
    // Why the system refuses to start the program at login; empty when it does not.
    Published<std::string> &loginItemRefusal;
    // Makes the application that the user works in the Cover App.
    std::function<void()> useFrontmostApp;
    // Makes the choice the Cover App, or clears it.
    std::function<void(const std::optional<CoverAppChoice> &)> selectCoverApp;
};

// What the page of the first start needs. All references outlive its window.
struct GuidanceModel {
    Platform platform;
    SettingsStore &settings;
    PermissionManager &permission;
    // Turns the effect on and closes the window.
    std::function<void()> begin;
};

// Draws what the program shows besides the overlays, with some toolkit. Main thread only.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    // The menu outlives the popover. Cheap: what costs is made when it is first shown.
    virtual std::unique_ptr<Popover> makePopover(StatusMenu &menu) = 0;

    // The windows call onWillClose once when the user closes them, and may be destroyed from within
    // that call.
    virtual std::unique_ptr<InterfaceWindow>
    makeSettingsWindow(const SettingsModel &model, std::function<void()> onWillClose) = 0;

    virtual std::unique_ptr<InterfaceWindow>
    makeGuidanceWindow(const GuidanceModel &model, std::function<void()> onWillClose) = 0;

    // Tells the user something, with a button to dismiss it.
    virtual void showMessage(const std::string &title, const std::string &text) = 0;
};

} // namespace lumo
