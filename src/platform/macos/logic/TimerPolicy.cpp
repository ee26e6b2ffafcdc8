#include "platform/macos/logic/TimerPolicy.h"

namespace lumo::macos {

namespace {

// What the system takes 0 for.
constexpr double shortestInterval = 0.0001;
constexpr double leisurelyInterval = 1;

} // namespace

TimerPolicy timerPolicy(double seconds, bool repeats) {
    const double interval = seconds > shortestInterval ? seconds : shortestInterval;
    const bool isLeisurely = repeats && interval >= leisurelyInterval;
    return {interval, isLeisurely ? interval / 10 : 0};
}

} // namespace lumo::macos
