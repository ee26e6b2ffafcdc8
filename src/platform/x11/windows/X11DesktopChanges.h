#pragma once

#include "platform/DesktopChanges.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <functional>

namespace lumo::x11 {

class WindowMirror;
class X11Screens;
class X11Workspace;

// Announces what changes the window list, the applications or the screens: all of them are made
// from what the server tells of.
class X11DesktopChanges final : public DesktopChanges {
  public:
    // All arguments outlive the object.
    X11DesktopChanges(WindowMirror &mirror, X11Screens &screens, X11Workspace &workspace);

    Handle onChange(std::function<void()> observer) override;

  private:
    Signal<> changed_;
    std::array<Handle, 3> sources_;
};

} // namespace lumo::x11
