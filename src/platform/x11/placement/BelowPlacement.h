#pragma once

#include "platform/x11/placement/StackedPlacement.h"
#include "support/Lifetime.h"

#include <optional>

namespace lumo::x11 {

// Restacks the overlay itself, an override-redirect window, directly among the frames of other
// windows.
class BelowPlacement final : public StackedPlacement {
  public:
    using StackedPlacement::StackedPlacement;

    [[nodiscard]] Outcome enforce(const Order &order) override;
    bool mayBeSeen(const Order & /*order*/) override { return true; }

  private:
    std::optional<Order> underWay_; // sent, and not yet to be seen in the mirror
    Lifetime lifetime_;
};

} // namespace lumo::x11
