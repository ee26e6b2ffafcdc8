#include "overlay/TickSchedule.h"

#include "platform/MainLoop.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumo {

namespace {

// One change of focus arrives as several announcements within milliseconds.
constexpr int ticksAtOnce = 6;

// Seconds by which a timer comes late on purpose, so that what is due is so in spite of rounding.
constexpr double lateness = 1e-6;

} // namespace

TickSchedule::TickSchedule(MainLoop &mainLoop, bool sleeps, std::function<void()> tick)
    : mainLoop_(mainLoop)
    , sleeps_(sleeps)
    , tick_(std::move(tick)) {
}

void TickSchedule::start() {
    startedAt_ = mainLoop_.now();
    steadyTime_ = startedAt_;
    isRunning_ = true;
    if (!sleeps_) {
        ticks_ = mainLoop_.every(interval, tick_);
    }
}

void TickSchedule::stop() {
    isRunning_ = false;
    ticks_.reset();
    waking_.reset();
    deadline_.reset();
}

void TickSchedule::wake() {
    if (!sleeps_ || !isRunning_ || waking_) {
        return;
    }
    const double earliest = steadyTime_ - (ticksAtOnce - 1) * interval;
    waking_ = mainLoop_.after(std::max(earliest - mainLoop_.now(), 0.0), [this] { runTick(); });
}

void TickSchedule::sleepUntil(std::optional<double> deadline) {
    deadline_.reset();
    if (sleeps_ && isRunning_ && deadline) {
        deadline_ = mainLoop_.after(std::max(*deadline - mainLoop_.now(), 0.0) + lateness,
                                    [this] { runTick(); });
    }
}

std::optional<double> TickSchedule::lastMissedTick() const {
    if (!sleeps_ || !isRunning_) {
        return std::nullopt;
    }
    const double count = std::ceil((mainLoop_.now() - startedAt_) / interval) - 1;
    return count > 0 ? std::optional(startedAt_ + count * interval) : std::nullopt;
}

void TickSchedule::runTick() {
    waking_.reset();
    deadline_.reset();
    steadyTime_ = std::max(steadyTime_, mainLoop_.now()) + interval;
    const auto tick = tick_; // which may end the schedule
    tick();
}

} // namespace lumo
