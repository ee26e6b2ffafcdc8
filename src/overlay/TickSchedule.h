#pragma once

#include "support/Handle.h"

#include <functional>
#include <optional>

namespace lumo {

class MainLoop;

// When the engine ticks: sixty times a second on a desktop that announces nothing. Where the
// desktop announces its changes the ticks sleep, and the next one comes after a change or when
// something of the engine's own is due.
//
// That shows the same because of one rule: a tick changes nothing when, since the tick before it,
// the desktop has announced nothing, no setting has been assigned and no deadline has passed. Only
// what each tick prolongs has to be made up for, see lastMissedTick(). Main thread only.
class TickSchedule {
  public:
    static constexpr double interval = 1.0 / 60; // seconds

    // The loop outlives the schedule. The tick may end the schedule.
    TickSchedule(MainLoop &mainLoop, bool sleeps, std::function<void()> tick);
    TickSchedule(const TickSchedule &) = delete;
    TickSchedule &operator=(const TickSchedule &) = delete;

    // From now on there are ticks, or none any more.
    void start();
    void stop();

    // Something that a tick reads may be different: one comes in a later turn of the loop. After a
    // few at once they come as rarely as ticks that never sleep.
    void wake();

    // At which time something of the engine's own is due, if at all; replaces what was said before.
    void sleepUntil(std::optional<double> deadline);

    // The time of the last tick before now that never sleeping would have run; absent when it was
    // not missed.
    std::optional<double> lastMissedTick() const;

  private:
    void runTick();

    MainLoop &mainLoop_;
    bool sleeps_;
    std::function<void()> tick_;
    double startedAt_ = 0;
    bool isRunning_ = false;
    Handle ticks_;    // of a schedule that never sleeps
    Handle waking_;   // from wake() to the tick
    Handle deadline_; // until something is due
    // When the next tick would be run if they had all come at the interval; behind the clock while
    // there is room for several at once.
    double steadyTime_ = 0;
};

} // namespace lumo
