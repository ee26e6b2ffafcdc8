#pragma once

#include "platform/WindowServer.h"
#include "support/Handle.h"

#include <array>
#include <memory>

namespace lumo::wayland {

class WaylandScreens;
class WaylandWorkspace;
class WindowSource;
struct DesktopWindow;

// The window list, made from what the source tells when it is asked for and something has changed.
//
// Windows come in their stacking order, but the focused one, when it is an ordinary one, is the
// first of the ordinary ones, with the window whose dialog it is next: focus does not always raise
// here, and the frontmost ordinary window stands for the one that the user works in. Panels are no
// windows of this list.
class WaylandWindowServer final : public WindowServer {
  public:
    // All arguments outlive the object.
    WaylandWindowServer(WindowSource &source, WaylandScreens &screens, WaylandWorkspace &workspace);

    std::shared_ptr<const WindowRecords> onScreenWindows() const override;

  private:
    WindowRecords makeRecords() const;
    WindowRecord makeRecord(const DesktopWindow &window) const;

    const WindowSource &source_;
    const WaylandScreens &screens_;
    const WaylandWorkspace &workspace_;
    mutable bool isStale_ = true;
    mutable std::shared_ptr<const WindowRecords> records_;
    std::array<Handle, 3> changes_;
};

} // namespace lumo::wayland
