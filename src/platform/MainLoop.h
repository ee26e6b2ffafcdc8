#pragma once

#include "support/Handle.h"

#include <functional>

namespace lumo {

// How soon the result of background work is wanted.
enum class QualityOfService { userInitiated, utility };

// The main thread's queue of work, its clock and its timers. Everything runs on the main thread
// unless it says otherwise. Work that outlives its owner must be guarded by the owner (see
// Lifetime).
class MainLoop {
  public:
    virtual ~MainLoop() = default;

    // Seconds on the monotonic media clock: never steps back, does not follow the wall clock.
    virtual double now() const = 0;

    // Runs the task on the main thread in a later turn of the loop, in the order of posting.
    // May be called from any thread.
    virtual void post(std::function<void()> task) = 0;

    // Runs the task once, this many seconds from now, unless the handle is released before.
    virtual Handle after(double seconds, std::function<void()> task) = 0;

    // Runs the task every so many seconds until the handle is released. Ticks that the loop was too
    // busy for are dropped, not made up for.
    virtual Handle every(double seconds, std::function<void()> task) = 0;

    // Runs the task on some other thread. May be called from any thread. Tasks that have not begun
    // when the loop is destroyed are dropped.
    virtual void runInBackground(QualityOfService quality, std::function<void()> task) = 0;
};

} // namespace lumo
