#pragma once

#include "platform/MainLoop.h"
#include "platform/x11/Placement.h"
#include "support/Lifetime.h"

#include <cstddef>
#include <optional>

namespace lumo::x11 {

class Connection;
class LogOnce;
class WindowMirror;

// Restacks the overlay itself, which no window manager handles, directly among the frames of other
// windows.
class BelowPlacement final : public Placement {
  public:
    BelowPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                   LogOnce &log, xcb_window_t overlay);

    bool isPossible(const Order &order) const override;
    bool holds(const Order &order) const override;
    void enforce(const Order &order) override;
    std::vector<xcb_window_t> lowerWindows(const Order &order) const override;

  private:
    // The order in the server's terms.
    struct Target {
        xcb_window_t sibling = XCB_NONE; // none: all windows
        std::uint32_t stackMode = XCB_STACK_MODE_ABOVE;
        std::size_t lowerCount = 0; // how many of the mirror's windows are to lie beneath
    };

    std::optional<Target> target(const Order &order) const;
    Target targetOfFront(int level) const;
    bool isVisible(xcb_window_t window) const;
    bool isWithinNormalBand(xcb_window_t window) const;
    bool mayCorrect(const Order &order);

    Connection &connection_;
    const WindowMirror &mirror_;
    const MainLoop &mainLoop_;
    LogOnce &log_;
    xcb_window_t overlay_;
    std::optional<Order> underWay_; // sent, and not yet to be seen in the mirror

    std::optional<Order> corrected_;
    double correctedAt_ = 0; // seconds
    double allowance_ = 0;   // how many more corrections of that order there may be

    Lifetime lifetime_;
};

} // namespace lumo::x11
