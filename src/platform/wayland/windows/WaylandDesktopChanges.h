#pragma once

#include "platform/DesktopChanges.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <functional>

namespace lumo::wayland {

class WaylandScreens;
class WaylandWorkspace;
class WindowSource;

// Announces what changes the window list, the applications or the screens: all of them are made
// from what the source and the compositor tell.
class WaylandDesktopChanges final : public DesktopChanges {
  public:
    // All arguments outlive the object, and were made for each other before it.
    WaylandDesktopChanges(WindowSource &source, WaylandScreens &screens,
                          WaylandWorkspace &workspace);

    Handle onChange(std::function<void()> observer) override;

  private:
    Signal<> changed_;
    std::array<Handle, 3> sources_;
};

} // namespace lumo::wayland
