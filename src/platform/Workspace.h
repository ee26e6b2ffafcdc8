#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

// Whether an application shows itself to the user: in the task switcher, only by its windows, or
// not at all.
enum class ActivationPolicy { regular, accessory, prohibited };

// What becomes of an application of which no window is shown, since all are minimised or on another
// desktop: it comes back, or is left alone.
enum class HiddenApplication { show, leave };

struct RunningApplication {
    std::int32_t processIdentifier = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    ActivationPolicy activationPolicy = ActivationPolicy::regular;

    bool operator==(const RunningApplication &) const = default;
};

// An application that could be started.
struct InstalledApplication {
    std::string bundleIdentifier;
    std::string localizedName;

    bool operator==(const InstalledApplication &) const = default;
};

// The running applications and what happens to them. References and pointers that are handed out
// are valid until control returns to the main loop.
class Workspace {
  public:
    virtual ~Workspace() = default;

    // The application that has the user's focus; null when none has.
    virtual const RunningApplication *frontmostApplication() const = 0;

    // Every application that has a window or a desktop entry and runs now, in no particular order.
    virtual const std::vector<RunningApplication> &runningApplications() const = 0;

    // The application of a process; null when the process is gone or is no application.
    virtual const RunningApplication *runningApplication(std::int32_t processIdentifier) const = 0;

    // Every application that the desktop offers to start, in no particular order. Not for every
    // tick: reads from disk what has changed.
    virtual std::vector<InstalledApplication> installedApplications() const = 0;

    // This program itself. Always present, even while it has no window.
    virtual const RunningApplication &ownApplication() const = 0;

    // Brings the application with all its windows to the front and gives it the focus. False when
    // the system refused; true does not promise that it has happened yet. Where activating never
    // brings minimised windows back, a hidden application stays hidden in any case.
    virtual bool activate(std::int32_t processIdentifier, HiddenApplication hidden) = 0;

    // Opens the system's settings, where they have one at the page on which the user lets this
    // program read and raise other applications' windows, without waiting for them. False when
    // there is no settings program.
    virtual bool openSystemSettings() = 0;

    // Calls the observer on the main thread after an application became frontmost, after one
    // terminated, and after the user switched to another space (a virtual desktop).
    virtual Handle onDidActivateApplication(std::function<void()> observer) = 0;
    virtual Handle onDidTerminateApplication(std::function<void()> observer) = 0;
    virtual Handle onActiveSpaceDidChange(std::function<void()> observer) = 0;
};

} // namespace lumo
