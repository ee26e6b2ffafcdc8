#pragma once

#include "platform/WindowServer.h"
#include "windows/FragmentSet.h"
#include "windows/WindowDescriptor.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace lumo {

struct RunningApplication;
class Workspace;

// The one view of other applications' windows. Every call asks the window server and the workspace
// afresh; the list made of their answers is kept for as long as these stay the same. Main thread
// only.
class WindowListService {
  public:
    // Owners that never hold the user's focus, by their exact name ...
    static constexpr std::array<std::string_view, 6> systemOwnerNames{
        "Dock",           "Control Center", "Notification Center",
        "SystemUIServer", "Window Server",  "universalAccessAuthWarn"};
    // ... and by a part of their name in whatever case.
    static constexpr FragmentSet systemOwnerFragments{"universalaccessauthwarn", "control center",
                                                      "notification center", "window server"};
    // Titles with one of these are those of short-lived windows. "finder" and "preview" are meant:
    // they mark any window whose title merely contains them.
    static constexpr FragmentSet transientTitleFragments{"menu",    "popover",  "tooltip", "sheet",
                                                         "dialog",  "utility",  "panel",   "finder",
                                                         "preview", "assistant"};

    // Both must outlive the service.
    WindowListService(const WindowServer &windowServer, const Workspace &workspace);

    // Every window on screen that its record describes well enough, front to back. zOrder counts
    // the records, dropped ones included. Empty when the window server can't be asked. Never null;
    // the list never changes once returned.
    std::shared_ptr<const std::vector<WindowDescriptor>> allVisibleWindows() const;

    // The numbers of the application's windows on screen, front to back.
    std::vector<std::uint32_t> windowIDs(const RunningApplication &application) const;

    static bool isSystemWindow(std::string_view ownerName);
    static bool isTransientWindow(std::string_view name);

    // Whether the window is large enough, and not transient by its title, to be what the user
    // focuses on.
    static bool isPrimaryContentWindow(const WindowDescriptor &window);

  private:
    const WindowServer &windowServer_;
    const Workspace &workspace_;
    // The list that was made last, and of what. A tick that made it anew would spend most of its
    // time on that.
    mutable std::shared_ptr<const WindowRecords> records_;
    mutable std::shared_ptr<const std::vector<WindowDescriptor>> windows_;
};

} // namespace lumo
