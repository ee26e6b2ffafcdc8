#pragma once

#include "platform/x11/placement/StackedPlacement.h"

#include <cstdint>

namespace lumo::x11 {

// Leaves the overlay to the window manager as a window like others, and asks it to restack the
// overlay the way pagers ask.
class ManagedPlacement final : public StackedPlacement {
  public:
    // The overlay is a managed window.
    using StackedPlacement::StackedPlacement;

    [[nodiscard]] Outcome enforce(const Order &order) override;

    // False until the window manager has put it into an order for the first time.
    bool mayBeSeen(const Order &order) override;

  private:
    void ask(const Target &wanted);
    bool isRequestDue(const Order &order) const;

    bool hasBeenPlaced_ = false;
    Order asked_;
    double askedAt_ = 0;        // seconds
    std::uint64_t askedIn_ = 0; // the mirror's revision
    int ignored_ = 0;           // requests in a row after which nothing has changed
};

} // namespace lumo::x11
