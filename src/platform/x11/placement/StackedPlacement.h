#pragma once

#include "platform/x11/placement/Corrections.h"
#include "platform/x11/placement/Placement.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;
class WindowMirror;
struct MirrorWindow;

// What all placements share that keep the overlay between other windows: where that is, and when
// restacking it has become a conflict.
class StackedPlacement : public Placement {
  public:
    // The first three arguments outlive the object.
    StackedPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                     xcb_window_t overlay);

    bool isPossible(const Order &order) const override;
    bool holds(const Order &order) const override;
    std::vector<xcb_window_t> lowerWindows(const Order &order) const override;

  protected:
    // The order in terms of a ConfigureWindow request.
    struct Target {
        const MirrorWindow *sibling = nullptr; // null: all windows
        std::uint32_t stackMode = XCB_STACK_MODE_ABOVE;
        std::size_t lowerCount = 0; // how many of the mirror's windows are to lie beneath
    };

    // Absent for an impossible order.
    std::optional<Target> target(const Order &order) const;

    // Notes one more restacking. True when it would be one too many.
    bool isConflict(const Order &order, const Target &target);

    Connection &connection_;
    const WindowMirror &mirror_;
    const MainLoop &mainLoop_;
    const xcb_window_t overlay_;

  private:
    Target targetOfFront(int level) const;
    xcb_window_t offender(const Target &target) const;

    Corrections corrections_;
};

} // namespace lumo::x11
