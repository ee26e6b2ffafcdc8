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
class PlacementChoice;
class WindowMirror;
struct MirrorWindow;

// What all placements share that keep the overlay between other windows: where that is, and when
// somebody else will not have it there.
class StackedPlacement : public Placement {
  public:
    // All arguments outlive the object.
    StackedPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                     PlacementChoice &choice, xcb_window_t overlay);

    bool isPossible(const Order &order) const override;
    bool holds(const Order &order) const override;
    std::vector<xcb_window_t> lowerWindows(const Order &order) const override;

  protected:
    // The order in the server's terms.
    struct Target {
        const MirrorWindow *sibling = nullptr; // null: all windows
        std::uint32_t stackMode = XCB_STACK_MODE_ABOVE;
        std::size_t lowerCount = 0; // how many of the mirror's windows are to lie beneath
    };

    std::optional<Target> target(const Order &order) const;

    // Counts a correction. False, and the end of this placement, when there were too many.
    bool mayCorrect(const Order &order);

    Connection &connection_;
    const WindowMirror &mirror_;
    const MainLoop &mainLoop_;
    const xcb_window_t overlay_;

  private:
    Target targetOfFront(int level) const;
    xcb_window_t offender(const Target &target) const;

    PlacementChoice &choice_;
    Corrections corrections_;
};

} // namespace lumo::x11
