#include "platform/wayland/windows/AskingPace.h"

namespace lumo::wayland {

namespace {

constexpr double longestRest = 0.5; // seconds, of a hand that goes on with the same motion

} // namespace

std::optional<double> AskingPace::interval(double now) const {
    if (movedAt_ && now - *movedAt_ < longestRest) {
        return whileMoving;
    }
    if (movable_ == Movable::nothing) {
        return std::nullopt;
    }
    if (isInputActive_) {
        return whileActive;
    }
    return movable_ == Movable::windows ? std::optional(whileIdle) : std::nullopt;
}

} // namespace lumo::wayland
