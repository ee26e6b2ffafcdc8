#pragma once

#include "platform/x11/placement/Placement.h"

#include <deque>

namespace lumo::x11 {

// Tells the corrections of an order that windows coming and going make necessary from a conflict:
// the window manager or a client undoes the same correction again and again.
class Corrections {
  public:
    // Notes one more, at that time in seconds: the order did not hold because of that window. True
    // when the same has been corrected for the same reason so often that it is a conflict.
    bool isConflict(const Order &order, xcb_window_t offender, double now) {
        if (order != order_ || offender != offender_) {
            order_ = order;
            offender_ = offender;
            times_.clear();
        }
        times_.push_back(now);
        while (now - times_.front() > span) {
            times_.pop_front();
        }
        return times_.size() > few;
    }

    void clear() { times_.clear(); }

  private:
    static constexpr double span = 1; // seconds
    static constexpr std::size_t few = 6;

    Order order_;
    xcb_window_t offender_ = XCB_NONE;
    std::deque<double> times_;
};

} // namespace lumo::x11
