#include "drawing/gl/GlThread.h"

#include <utility>

namespace lumo::drawing {

GlThread::GlThread()
    : thread_([this] { run(); }) {
}

GlThread::~GlThread() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    hasTask_.notify_one();
    thread_.join();
}

void GlThread::post(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    hasTask_.notify_one();
}

void GlThread::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        hasTask_.wait(lock, [this] { return isEnding_ || !tasks_.empty(); });
        if (tasks_.empty()) {
            return;
        }
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

} // namespace lumo::drawing
