#pragma once

#include "platform/Screens.h"

#include <vector>

namespace lumo::macos {

// The screens in the system's order, which begins with the one that has the menu bar.
class MacScreens final : public Screens {
  public:
    const std::vector<Screen> &screens() const override;
    Handle onScreenParametersDidChange(std::function<void()> observer) override;

  private:
    mutable std::vector<Screen> screens_;
};

} // namespace lumo::macos
