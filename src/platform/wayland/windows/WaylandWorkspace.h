#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/ApplicationIdentities.h"
#include "platform/freedesktop/SettingsOpener.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumo::wayland {

class WindowSource;
struct DesktopWindow;

// The applications behind the windows: every process that has one is running, the one with the
// focused window is frontmost.
//
// An application is a regular one while it has a window that task bars show.
class WaylandWorkspace final : public Workspace {
  public:
    // Both arguments outlive the object.
    WaylandWorkspace(WindowSource &source, const Log &log);

    const RunningApplication *frontmostApplication() const override;
    const std::vector<RunningApplication> &runningApplications() const override;
    const RunningApplication *runningApplication(std::int32_t processIdentifier) const override;
    std::vector<InstalledApplication> installedApplications() const override;
    const RunningApplication &ownApplication() const override { return applications_.own(); }
    bool activate(std::int32_t processIdentifier, HiddenApplication hidden) override;
    bool openSystemSettings() override { return settingsOpener_.open(); }
    Handle onDidActivateApplication(std::function<void()> observer) override;
    Handle onDidTerminateApplication(std::function<void()> observer) override;
    Handle onActiveSpaceDidChange(std::function<void()> observer) override;

    // Calls the observer after the desktop entries have changed, from which the applications have
    // their names.
    Handle onEntriesDidChange(std::function<void()> observer) {
        return applications_.onChange(std::move(observer));
    }

  private:
    void refresh() const;
    void announce();

    WindowSource &source_;
    freedesktop::SettingsOpener settingsOpener_;
    mutable freedesktop::ApplicationIdentities applications_;
    mutable bool isStale_ = true;
    mutable std::vector<RunningApplication> running_; // by process identifier

    std::vector<std::int32_t> announcedProcesses_; // sorted
    std::optional<std::uint32_t> announcedFocus_;
    std::string announcedSpaces_;
    Signal<> activated_;
    Signal<> terminated_;
    Signal<> spaceChanged_;
    std::array<Handle, 2> changes_;
};

} // namespace lumo::wayland
