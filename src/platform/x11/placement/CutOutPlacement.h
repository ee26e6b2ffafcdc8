#pragma once

#include "drawing/CutOuts.h"
#include "platform/x11/placement/Corrections.h"
#include "platform/x11/placement/Placement.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Lifetime.h"

#include <cstdint>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {
class LogOnce;
}

namespace lumo::x11 {

class Connection;
class OverlaySurface;
class WindowMirror;
struct MirrorWindow;

// Keeps the overlay above all other windows but menus and the like, cut out where
// drawing::clearWindows() says that they stay clear. So there is no place in the stacking order to
// be in conflict about.
class CutOutPlacement final : public Placement {
  public:
    // What is passed by reference outlives the object. The overlay's shape is this object's from
    // now on.
    CutOutPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                    freedesktop::LogOnce &log, bool focusRaises, OverlaySurface &overlay);

    bool isPossible(const Order &order) const override;
    bool holds(const Order &order) const override;
    [[nodiscard]] Outcome enforce(const Order &order) override;
    double remainingPause() const override;
    void follow(const Order &order) override;
    bool mayBeSeen(const Order & /*order*/) override { return true; }
    std::vector<xcb_window_t> lowerWindows(const Order &order) const override;

  private:
    // That a window is not a rectangle. Only the server knows what it is instead.
    struct WindowShape {
        xcb_window_t window = XCB_NONE;
        int x = 0; // of the shape's origin, on the root window
        int y = 0;
        std::uint64_t serial = 0; // another one after each change

        bool operator==(const WindowShape &) const = default;
    };

    // The overlay's shape as a value.
    struct Shape {
        drawing::PixelRect overlay;
        std::vector<drawing::CutOutPiece> pieces;
        std::vector<WindowShape> windowShapes; // of pieces

        bool operator==(const Shape &) const = default;
    };

    // What an order comes to, as the windows are.
    struct Plan {
        Shape shape;
        std::vector<xcb_window_t> covered; // from the top
        // The topmost of these that lies above the overlay, or a translucent floating window
        // beneath it.
        xcb_window_t offender = XCB_NONE;
        xcb_window_t floor = XCB_NONE; // the topmost window but those that float above all others
    };

    const Plan &plan(const Order &order) const;
    Plan makePlan(const Order &order) const;
    void leaveFloating(std::vector<drawing::CutOutWindow> &windows,
                       const std::vector<bool> &isClear, std::size_t above, Plan &plan) const;
    const MirrorWindow *referenceOf(const Order &order) const;
    drawing::CutOutWindow describe(const MirrorWindow &window, const MirrorWindow *reference) const;
    bool isDialogOf(const MirrorWindow &window, const MirrorWindow &owner) const;
    drawing::CutOutRule ruleOf(const Order &order, const MirrorWindow *reference) const;
    std::vector<WindowShape> shapesOf(const std::vector<drawing::CutOutPiece> &pieces) const;
    bool coversWhatWasClear(const Shape &shape) const;
    void push(const Shape &shape);
    OwnedRegion regionOf(const Shape &shape) const;
    OwnedRegion regionOfShaped(const Shape &shape) const;
    OwnedRegion regionOf(const drawing::CutOutPiece &piece, const Shape &shape) const;
    void raise(const Order &order, const Plan &plan);

    Connection &connection_;
    const WindowMirror &mirror_;
    const MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    const bool focusRaises_;
    OverlaySurface &overlay_;

    Shape pushed_;
    mutable Plan plan_; // for that order, from the mirror as it was then
    mutable Order plannedOrder_;
    mutable std::uint64_t plannedFrom_ = 0;

    bool isRaising_ = false;
    Corrections corrections_;
    double pausedUntil_ = 0; // seconds
    double pause_ = 1;       // the next one's length
    Lifetime lifetime_;
};

} // namespace lumo::x11
