#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/placement/Corrections.h"
#include "platform/x11/placement/Placement.h"
#include "support/Lifetime.h"

#include <cstddef>
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

// Keeps the overlay on top of all others, cut out where a window is to be seen as it is: the
// reference, what lies above that, docks, windows kept on top, menus and their like. There is no
// place among the windows to fight about.
//
// Where focus does not raise, the reference counts as the topmost of the ordinary windows; of those
// that really lie above it only those stay as they are that hide a part of it or belong to it.
class CutOutPlacement final : public Placement {
  public:
    // What is passed by reference outlives the object. The overlay's shape is this object's from
    // now on.
    CutOutPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                    freedesktop::LogOnce &log, bool focusRaises, OverlaySurface &overlay);
    ~CutOutPlacement() override;

    bool isPossible(const Order &order) const override;
    bool holds(const Order &order) const override;
    [[nodiscard]] Outcome enforce(const Order &order) override;
    void follow(const Order &order) override;
    bool mayBeSeen(const Order & /*order*/) override { return true; }
    std::vector<xcb_window_t> lowerWindows(const Order &order) const override;

  private:
    // A window that has a part in the shape.
    struct Piece {
        xcb_window_t window = XCB_NONE;
        drawing::PixelRect area; // what is seen of it
        drawing::PixelRect geometry;
        std::uint64_t shapeSerial = 0; // 0: the area is all there is
        bool isHole = false;           // else it hides holes beneath it

        bool operator==(const Piece &) const = default;
    };

    // The shape as a value: from the topmost window down to the lowest with a hole.
    struct Plan {
        drawing::PixelRect overlay;
        std::vector<Piece> pieces;

        bool operator==(const Plan &) const = default;
    };

    // What decides which windows stay clear, looked up once for all of them.
    struct Rule {
        Order order;
        const MirrorWindow *reference = nullptr; // null when there is none on screen
        std::size_t referenceIndex = 0;          // in the mirror's stacking
        const MirrorWindow *active = nullptr;
    };

    Rule ruleOf(const Order &order) const;
    bool staysClear(const MirrorWindow &window, std::size_t index, const Rule &rule) const;
    bool belongsTo(const MirrorWindow &window, const MirrorWindow &owner) const;
    const Plan &plan(const Order &order) const;
    Plan makePlan(const Order &order) const;
    xcb_window_t coveredWindowAbove(const Order &order) const;
    bool coversWhatWasClear(const Plan &plan) const;
    void push(const Plan &plan);
    void raise(const Order &order, xcb_window_t offender);

    Connection &connection_;
    const WindowMirror &mirror_;
    const MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    const bool focusRaises_;
    OverlaySurface &overlay_;

    Plan pushed_;
    mutable Plan plan_; // of that order, from the mirror as it was then
    mutable Order plannedOrder_;
    mutable std::uint64_t plannedFrom_ = 0;

    bool isRaising_ = false;
    Corrections corrections_;
    double pausedUntil_ = 0; // seconds
    double pause_ = 1;       // the next one's length
    Lifetime lifetime_;
};

} // namespace lumo::x11
