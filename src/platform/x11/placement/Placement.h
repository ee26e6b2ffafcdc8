#pragma once

#include <xcb/xcb.h>

#include <vector>

namespace lumo::x11 {

// Where an overlay is wanted in the stacking order.
struct Order {
    enum class Kind {
        out,   // not on screen
        front, // above all of its stacking layer and of those below, but for this program's own
               // windows where these lie above the others
        below, // directly beneath the reference
    };

    Kind kind = Kind::out;
    xcb_window_t reference = XCB_NONE; // for Kind::below: a managed window, or its frame
    int level = 0; // for Kind::front: 0 is the stacking layer of ordinary windows

    bool operator==(const Order &) const = default;
};

// A way to get one overlay into its order and to keep it there, against window managers of one
// kind. Overlays do not count among themselves: an order holds when nothing but other overlays
// lies between. Reads the window mirror, so asking costs no request. Main thread only.
class Placement {
  public:
    enum class Outcome {
        pursued,   // the order holds, is asked for, or will be when there is a point to it
        abandoned, // each restacking is undone: placements of this kind are of no use here
    };

    virtual ~Placement() = default;

    // False when the reference is gone or not on screen, so that there is no such order.
    virtual bool isPossible(const Order &order) const = 0;

    // False when a person could see that the order is not so. True for an impossible one.
    virtual bool holds(const Order &order) const = 0;

    // Asks for the order. The result takes a while to arrive in the mirror, and a window manager
    // may refuse it; so an order that does not hold may be asked for again, and is sent again when
    // there is a point to it.
    [[nodiscard]] virtual Outcome enforce(const Order &order) = 0;

    // For how many seconds more enforce() leaves an order alone that does not hold.
    virtual double remainingPause() const { return 0; }

    // Does what can be done at once when windows have come, gone or moved since the order was
    // enforced, while nothing that is painted beneath the overlay differs.
    virtual void follow(const Order & /*order*/) {}

    // False while a mapped overlay would be seen somewhere else than in its order.
    virtual bool mayBeSeen(const Order &order) = 0;

    // The children of the root window that are to be seen through the overlay when the order holds,
    // from the bottom to the top and without overlays; for an impossible one those beneath it now.
    virtual std::vector<xcb_window_t> lowerWindows(const Order &order) const = 0;
};

} // namespace lumo::x11
