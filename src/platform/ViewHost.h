#pragma once

#include "support/Geometry.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo {

// A view that a toolkit draws, as the desktop knows it. The toolkit owns it and keeps it for as
// long as whatever it is put into.
struct HostedView {
    void *nativeView = nullptr; // on macOS an NSView
    Size size;                  // points
};

// A popover below the status item. Closes by itself when the user acts outside of it, and on
// destruction, without a word.
class HostedPopover {
  public:
    virtual ~HostedPopover() = default;

    virtual bool isShown() const = 0;
    virtual void show() = 0;
    virtual void close() = 0;
};

// A window with a title bar around a view. Closed on destruction, without a word.
class HostedWindow {
  public:
    virtual ~HostedWindow() = default;

    virtual void makeKeyAndOrderFront() = 0;
};

enum class HostedWindowKind {
    guidance, // can be closed; its view reaches beneath the title bar
    settings, // can be closed and minimised
};

// Puts a toolkit's views into what the desktop itself draws around them, where it has its own way
// with that. Main thread only.
class ViewHost {
  public:
    virtual ~ViewHost() = default;

    // Calls onDidClose each time the popover has closed; it may be destroyed from within that call.
    virtual std::unique_ptr<HostedPopover> makePopover(const HostedView &view,
                                                       std::function<void()> onDidClose) = 0;

    // A window in the middle of the screen, not shown yet. Calls onWillClose once when the user
    // closes it; the window may be destroyed from within that call.
    virtual std::unique_ptr<HostedWindow> makeWindow(HostedWindowKind kind,
                                                     const std::string &title,
                                                     const HostedView &view,
                                                     std::function<void()> onWillClose) = 0;
};

} // namespace lumo
