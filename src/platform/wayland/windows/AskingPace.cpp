#include "platform/wayland/windows/AskingPace.h"

#include <algorithm>

namespace lumo::wayland {

namespace {

constexpr double longestRest = 0.5; // seconds, of a hand that goes on with the same motion

// The interval that leaves answers no more than their share of the time, but for single answers
// that have come late.
double atMost(double share, double interval, double answer) {
    constexpr double longest = 4; // intervals
    return std::clamp(answer / share, interval, longest * interval);
}

} // namespace

std::optional<double> AskingPace::interval(double now) const {
    if (movedAt_ && now - *movedAt_ < longestRest) {
        return atMost(0.25, whileMoving, lastAnswer_);
    }
    if (movable_ == Movable::nothing) {
        return std::nullopt;
    }
    if (isInputActive_) {
        return atMost(0.1, whileActive, lastAnswer_);
    }
    return movable_ == Movable::windows ? std::optional(atMost(0.01, whileIdle, lastAnswer_))
                                        : std::nullopt;
}

} // namespace lumo::wayland
