#include "ScriptedMainLoop.h"

#include <algorithm>
#include <utility>

namespace lumo::test {

ScriptedMainLoop::ScriptedMainLoop(double startTime)
    : now_(startTime) {
}

void ScriptedMainLoop::post(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
}

Handle ScriptedMainLoop::after(double seconds, std::function<void()> task) {
    return add(seconds, 0, std::move(task));
}

Handle ScriptedMainLoop::every(double seconds, std::function<void()> task) {
    return add(seconds, seconds, std::move(task));
}

Handle ScriptedMainLoop::add(double seconds, double interval, std::function<void()> task) {
    auto timer = std::make_shared<Timer>(Timer{now_ + seconds, interval, std::move(task)});
    timers_.push_back(timer);
    return Handle([this, timer] { std::erase(timers_, timer); });
}

void ScriptedMainLoop::runInBackground(QualityOfService quality, std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    background_.push_back({quality, std::move(task)});
}

void ScriptedMainLoop::runPosted() {
    for (;;) {
        std::function<void()> task;
        {
            const std::lock_guard lock(mutex_);
            if (posted_.empty()) {
                return;
            }
            task = std::move(posted_.front());
            posted_.pop_front();
        }
        task();
    }
}

std::shared_ptr<ScriptedMainLoop::Timer> ScriptedMainLoop::nextDue(double limit) const {
    std::shared_ptr<Timer> next;
    for (const auto &timer : timers_) {
        if (timer->due <= limit && (!next || timer->due < next->due)) {
            next = timer;
        }
    }
    return next;
}

void ScriptedMainLoop::advance(double seconds) {
    // Ticks add up to their due times only within rounding.
    constexpr double tolerance = 1e-9;
    const double end = now_ + seconds;
    runPosted();
    // Held by a copy of the pointer, because a task may release its own timer.
    while (const auto timer = nextDue(end + tolerance)) {
        now_ = std::max(now_, timer->due);
        if (timer->interval > 0) {
            timer->due += timer->interval;
        } else {
            std::erase(timers_, timer);
        }
        timer->task();
        runPosted();
    }
    now_ = std::max(now_, end);
}

std::vector<ScriptedMainLoop::BackgroundTask> ScriptedMainLoop::takeBackgroundTasks() {
    const std::lock_guard lock(mutex_);
    return std::exchange(background_, {});
}

void ScriptedMainLoop::runBackgroundTasks() {
    for (auto &task : takeBackgroundTasks()) {
        task.run();
    }
    runPosted();
}

} // namespace lumo::test
