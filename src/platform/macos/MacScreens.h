#pragma once

#include "platform/Screens.h"
#include "platform/macos/logic/ScreenList.h"

#include <vector>

namespace lumo::macos {

// The screens in the system's order, which begins with the one that has the menu bar.
class MacScreens final : public Screens {
  public:
    // The main loop outlives the screens.
    explicit MacScreens(MainLoop &mainLoop);

    const std::vector<Screen> &screens() const override;
    Handle onScreenParametersDidChange(std::function<void()> observer) override;

  private:
    mutable ScreenList screens_; // as of the last call
};

} // namespace lumo::macos
