#pragma once

#include "platform/Accessibility.h"
#include "platform/x11/windows/Pager.h"
#include "support/Handle.h"
#include "support/Signal.h"

namespace lumo::x11 {

class Connection;
class WindowMirror;
struct MirrorChange;

// Other applications' windows by way of the window manager. This process is trusted with them while
// one runs that tells which window is active and activates those that it is asked to.
class X11Accessibility final : public Accessibility {
  public:
    X11Accessibility(Connection &connection, WindowMirror &mirror);

    bool isProcessTrusted() const override;
    Handle onProcessTrustDidChange(std::function<void()> observer) override;
    Handle onFocusedWindowDidChange(std::function<void()> observer) override;

    // Front to back.
    std::vector<std::unique_ptr<AccessibilityWindow>>
    windows(std::int32_t processIdentifier) override;

  private:
    class Window;

    void handle(const MirrorChange &change);

    const WindowMirror &mirror_;
    Pager pager_;
    bool announcedTrust_;
    Signal<> trustChanged_;
    Signal<> focusedWindowChanged_;
    Handle changes_;
};

} // namespace lumo::x11
