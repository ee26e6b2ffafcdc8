#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/DesktopEntries.h"
#include "platform/freedesktop/SettingsOpener.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lumo::wayland {

class WindowSource;
struct DesktopWindow;

// The applications behind the windows: every process that has one is running, the one with the
// focused window is frontmost.
//
// An application's bundle identifier is that of its desktop entry, else the application that its
// windows name. It is a regular one while it has a window that task bars show, and else an
// accessory.
class WaylandWorkspace final : public Workspace {
  public:
    // Both arguments outlive the object.
    WaylandWorkspace(WindowSource &source, const Log &log);

    const RunningApplication *frontmostApplication() const override;
    const std::vector<RunningApplication> &runningApplications() const override;
    const RunningApplication *runningApplication(std::int32_t processIdentifier) const override;
    std::vector<InstalledApplication> installedApplications() const override;
    const RunningApplication &ownApplication() const override { return own_; }
    bool activate(std::int32_t processIdentifier, HiddenApplication hidden) override;
    bool openSystemSettings() override { return settingsOpener_.open(); }
    Handle onDidActivateApplication(std::function<void()> observer) override;
    Handle onDidTerminateApplication(std::function<void()> observer) override;
    Handle onActiveSpaceDidChange(std::function<void()> observer) override;

    // Calls the observer after the desktop entries have changed, from which the applications have
    // their names.
    Handle onEntriesDidChange(std::function<void()> observer) {
        return entriesChanged_.subscribe(std::move(observer));
    }

  private:
    void refresh() const;
    RunningApplication identify(const DesktopWindow &window) const;
    void announce();

    WindowSource &source_;
    freedesktop::SettingsOpener settingsOpener_;
    RunningApplication own_;
    mutable freedesktop::DesktopEntries entries_;
    mutable bool isStale_ = true;
    mutable std::vector<RunningApplication> running_; // by process identifier

    // What each process was found to be by the application that a window of it names.
    struct Identity {
        std::string named;
        RunningApplication application;
    };
    mutable std::map<std::int32_t, Identity> identities_;

    std::vector<std::int32_t> announcedProcesses_; // sorted
    std::optional<std::uint32_t> announcedFocus_;
    std::string announcedSpaces_;
    Signal<> activated_;
    Signal<> terminated_;
    Signal<> spaceChanged_;
    Signal<> entriesChanged_;
    std::array<Handle, 2> changes_;
};

} // namespace lumo::wayland
