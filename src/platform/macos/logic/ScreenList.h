#pragma once

#include "platform/Screens.h"

#include <memory>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::macos {

// The screens as they were last read. Main thread only.
class ScreenList {
  public:
    // The main loop outlives the list.
    explicit ScreenList(MainLoop &mainLoop);

    // Takes what was just read. Each list that was returned stays as it is until control returns to
    // the main loop, also when it is replaced before that.
    const std::vector<Screen> &update(std::vector<Screen> screens);

  private:
    MainLoop &mainLoop_;
    std::shared_ptr<const std::vector<Screen>> screens_;
};

} // namespace lumo::macos
