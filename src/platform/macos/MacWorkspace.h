#pragma once

#include "platform/Workspace.h"

#include <unordered_map>

namespace lumo::macos {

// The shared workspace. What it says about applications is read afresh at every call.
class MacWorkspace final : public Workspace {
  public:
    MacWorkspace();

    const RunningApplication *frontmostApplication() const override;
    const std::vector<RunningApplication> &runningApplications() const override;
    const RunningApplication *runningApplication(std::int32_t processIdentifier) const override;
    // From the system's, the computer's and the user's application folders.
    std::vector<InstalledApplication> installedApplications() const override;
    const RunningApplication &ownApplication() const override { return own_; }

    bool activate(std::int32_t processIdentifier, HiddenApplication hidden) override;
    bool openSystemSettings() override;

    Handle onDidActivateApplication(std::function<void()> observer) override;
    Handle onDidTerminateApplication(std::function<void()> observer) override;
    Handle onActiveSpaceDidChange(std::function<void()> observer) override;

  private:
    RunningApplication own_;
    // Nodes stay where they are, so that pointers to them do.
    mutable std::unordered_map<std::int32_t, RunningApplication> byProcess_;
    mutable std::vector<RunningApplication> running_;
    Handle terminations_;
};

} // namespace lumo::macos
