#pragma once

namespace lumo::macos {

// How a timer is set.
struct TimerPolicy {
    double interval = 0;  // seconds
    double tolerance = 0; // by how many seconds the system may delay it to save energy

    bool operator==(const TimerPolicy &) const = default;
};

// One-shot timers and those that keep up with the screen are never late on purpose; what repeats
// once a second or less may be, by a tenth. An interval that is no positive number is the shortest.
TimerPolicy timerPolicy(double seconds, bool repeats);

} // namespace lumo::macos
