#pragma once

#include <xcb/xcb.h>

#include <vector>

namespace lumo::x11 {

// Where an overlay is wanted among the other windows.
struct Order {
    enum class Kind {
        out,   // nowhere
        front, // above all of its stacking layer and of those below
        below, // directly beneath the reference
    };

    Kind kind = Kind::out;
    xcb_window_t reference = XCB_NONE; // for Kind::below: a window of a program, or its frame
    int level = 0; // for Kind::front: 0 is the stacking layer of ordinary windows

    bool operator==(const Order &) const = default;
};

// A way to get one overlay into its order and to keep it there, against window managers of one
// kind. Overlays are no obstacles to one another: an order holds when nothing but other overlays
// lies between. Reads the window mirror, so asking costs nothing. Main thread only.
class Placement {
  public:
    virtual ~Placement() = default;

    // False when the reference is gone or not on screen, so that there is no such order.
    virtual bool isPossible(const Order &order) const = 0;

    // False when a person could see that the order is not so. True for an impossible one.
    virtual bool holds(const Order &order) const = 0;

    // Asks the server for the order. The answer takes a while to arrive in the mirror, and a window
    // manager may see things differently; so an order that did not hold may be asked for again, and
    // is sent again when there is a point to it.
    virtual void enforce(const Order &order) = 0;

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
