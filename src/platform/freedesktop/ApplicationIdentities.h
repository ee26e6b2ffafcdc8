#pragma once

#include "platform/Workspace.h"
#include "platform/freedesktop/DesktopEntries.h"
#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumo::freedesktop {

// Which applications processes are, by what their windows say. An application's bundle identifier
// is that of its desktop entry, else the class of its windows. Main thread only.
class ApplicationIdentities {
  public:
    // As a window says; both the same where the window system knows one name.
    struct Names {
        std::string className;
        std::string instanceName;

        bool operator==(const Names &) const = default;
    };

    ApplicationIdentities();

    // The application of a process with a window of these names. It is a regular one when that is
    // in task bars, whatever its entry says, and else an accessory. What is known already is not
    // looked up again before revision() has changed.
    RunningApplication identify(std::int32_t process, const Names &names, bool isInTaskbars);

    // Forgets all processes but these, which are sorted by their identifiers.
    void keepOnly(const std::vector<RunningApplication> &running);

    // Those that menus show.
    std::vector<InstalledApplication> installed();

    // This program.
    const RunningApplication &own() const { return own_; }

    // A number that is another one after the desktop entries changed.
    std::uint64_t revision() const { return entries_.revision(); }

    // Calls the observer after revision() has changed.
    Handle onChange(std::function<void()> observer) {
        return entries_.onChange(std::move(observer));
    }

  private:
    struct Identity {
        Names names;
        std::uint64_t revision = 0;
        RunningApplication application;
    };

    RunningApplication lookUp(std::int32_t process, const Names &names);

    DesktopEntries entries_;
    RunningApplication own_;
    std::unordered_map<std::int32_t, Identity> identities_;
};

// That of the process among applications which are sorted by their processes; null when it is not
// among them.
const RunningApplication *applicationOf(std::int32_t process,
                                        const std::vector<RunningApplication> &applications);

} // namespace lumo::freedesktop
