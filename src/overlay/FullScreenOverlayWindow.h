#pragma once

#include "platform/OverlayWindows.h"
#include "support/Geometry.h"

#include <cstdint>
#include <memory>

namespace lumo {

// The overlay window of one display. Its frame is taken as it is, never pulled into the area that
// menu bar and dock leave free. Orders itself out and closes when destroyed.
class FullScreenOverlayWindow {
  public:
    // A window with this frame, at the level of ordinary windows, opaque as a whole, not ordered
    // in.
    FullScreenOverlayWindow(OverlayWindows &overlayWindows, const Rect &contentRect);

    // Fatal for a number that the window list could not hold.
    std::uint32_t windowNumber() const;

    // What the display's view is drawn on; lives as long as this window.
    PlatformWindow &platformWindow() { return *window_; }

    Rect frame() const { return window_->frame(); }
    void setFrame(const Rect &frame) { window_->setFrame(frame); }

    // The whole window's opacity, 0 to 1. Peek's alone: showing and hiding is the view's alpha.
    void setAlphaValue(double alpha) { window_->setAlphaValue(alpha); }

    void orderFront() { window_->orderFront(); }
    void orderOut() { window_->orderOut(); }

    // Puts the window at the level of ordinary windows, directly below the clear window, or in
    // front of all of them without one.
    void orderBelowClearWindow(std::optional<std::uint32_t> clearWindow);

  private:
    std::unique_ptr<PlatformWindow> window_;
};

} // namespace lumo
