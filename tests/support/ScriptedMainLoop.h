#pragma once

#include "platform/MainLoop.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace lumo::test {

// A main loop whose clock stands still until the test turns it. Background tasks wait until the
// test runs them, in whatever order or on whatever thread it likes.
class ScriptedMainLoop final : public MainLoop {
  public:
    struct BackgroundTask {
        QualityOfService quality;
        std::function<void()> run;
    };

    explicit ScriptedMainLoop(double startTime);

    double now() const override { return now_; }
    void post(std::function<void()> task) override;
    Handle after(double seconds, std::function<void()> task) override;
    Handle every(double seconds, std::function<void()> task) override;
    void runInBackground(QualityOfService quality, std::function<void()> task) override;

    // Runs posted tasks, those included that they post, until none is left.
    void runPosted();

    // Turns the clock on by this many seconds. Timers run in the order in which they are due, each
    // at its own time, and posted tasks after each of them.
    void advance(double seconds);

    // The background tasks asked for so far; taking them leaves none waiting.
    std::vector<BackgroundTask> takeBackgroundTasks();

    // Runs the waiting background tasks in order, and what they post.
    void runBackgroundTasks();

    std::size_t timerCount() const { return timers_.size(); }

  private:
    struct Timer {
        double due;
        double interval; // 0 for a timer that runs once
        std::function<void()> task;
    };

    Handle add(double seconds, double interval, std::function<void()> task);
    std::shared_ptr<Timer> nextDue(double limit) const;

    double now_;
    std::vector<std::shared_ptr<Timer>> timers_;
    std::mutex mutex_; // guards the two queues
    std::deque<std::function<void()>> posted_;
    std::vector<BackgroundTask> background_;
};

} // namespace lumo::test
