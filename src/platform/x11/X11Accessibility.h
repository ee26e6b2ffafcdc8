#pragma once

#include "platform/Accessibility.h"
#include "platform/x11/Pager.h"

namespace lumo::x11 {

class Connection;
class WindowMirror;

// Other applications' windows by way of the window manager. This process is trusted with them while
// one runs that tells which window is active and activates those that it is asked to.
class X11Accessibility final : public Accessibility {
  public:
    X11Accessibility(Connection &connection, const WindowMirror &mirror);

    bool isProcessTrusted() const override;

    // Front to back.
    std::vector<std::unique_ptr<AccessibilityWindow>>
    windows(std::int32_t processIdentifier) override;

  private:
    class Window;

    const WindowMirror &mirror_;
    Pager pager_;
};

} // namespace lumo::x11
