#include "platform/macos/logic/ScreenList.h"

#include "platform/MainLoop.h"

#include <utility>

namespace lumo::macos {

ScreenList::ScreenList(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , screens_(std::make_shared<const std::vector<Screen>>()) {
}

const std::vector<Screen> &ScreenList::update(std::vector<Screen> screens) {
    if (screens != *screens_) {
        // Callers may be iterating over the replaced list: the task holds it until the next turn.
        mainLoop_.post([replaced = std::move(screens_)] {});
        screens_ = std::make_shared<const std::vector<Screen>>(std::move(screens));
    }
    return *screens_;
}

} // namespace lumo::macos
