#pragma once

#include "platform/x11/placement/StackedPlacement.h"

#include <cstdint>

namespace lumo::x11 {

// Leaves the overlay to the window manager as a window like others, and asks the manager to restack
// it the way pagers ask.
class ManagedPlacement final : public StackedPlacement {
  public:
    // The overlay is one that managers handle.
    ManagedPlacement(Connection &connection, const WindowMirror &mirror, const MainLoop &mainLoop,
                     PlacementChoice &choice, xcb_window_t overlay);

    void enforce(const Order &order) override;

    // False until the manager has put it into an order for the first time.
    bool mayBeSeen(const Order &order) override;

  private:
    void ask(const Target &wanted);
    bool isAnswerDue(const Order &order) const;

    PlacementChoice &choice_;
    bool hasBeenPlaced_ = false;
    Order asked_;
    double askedAt_ = 0;        // seconds
    std::uint64_t askedIn_ = 0; // the mirror's revision
    int unheard_ = 0;           // requests since something last came of one
};

} // namespace lumo::x11
