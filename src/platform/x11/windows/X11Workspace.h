#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/ApplicationIdentities.h"
#include "platform/freedesktop/SettingsOpener.h"
#include "platform/x11/windows/Pager.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace lumo::x11 {

class Connection;
class WindowMirror;
struct MirrorChange;
struct MirrorWindow;

// The applications behind the windows: every process that has one is running, the one with the
// active window is frontmost.
//
// An application is a regular one while it has a managed window that task bars show.
class X11Workspace final : public Workspace {
  public:
    // All arguments outlive the object.
    X11Workspace(Connection &connection, WindowMirror &mirror, const Log &log);

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

    // A number that is another one after the applications, or what is known of them, changed.
    std::uint64_t revision() const;

    // Calls the observer after the desktop entries have changed, from which the applications have
    // their names.
    Handle onEntriesDidChange(std::function<void()> observer) {
        return applications_.onChange(std::move(observer));
    }

  private:
    void handle(const MirrorChange &change);
    void refresh() const;

    WindowMirror &mirror_;
    Pager pager_;
    freedesktop::SettingsOpener settingsOpener_;
    mutable freedesktop::ApplicationIdentities applications_;

    // Derived from the mirror and the entries as they were at these revisions.
    mutable std::vector<RunningApplication> running_; // by process identifier
    mutable std::uint64_t mirrorRevision_ = 0;
    mutable std::uint64_t entriesRevision_ = 0;
    mutable std::optional<std::size_t> frontmost_;

    std::vector<std::int32_t> announcedProcesses_; // sorted
    std::pair<std::optional<xcb_window_t>, std::int32_t> announcedFront_;
    Signal<> activated_;
    Signal<> terminated_;
    Signal<> spaceChanged_;
    Handle changes_;
};

} // namespace lumo::x11
