#include "support/WorkerThreads.h"

#include <algorithm>
#include <utility>

namespace lumo {

WorkerThreads::WorkerThreads(std::size_t threadLimit, AtEnd atEnd)
    : threadLimit_(threadLimit)
    , atEnd_(atEnd) {
}

WorkerThreads::~WorkerThreads() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    hasNews_.notify_all();
    for (auto &thread : threads_) {
        thread.join();
    }
}

void WorkerThreads::post(std::function<void()> task, Priority priority) {
    {
        const std::lock_guard lock(mutex_);
        queues_[static_cast<std::size_t>(priority)].push_back(std::move(task));
        if (idle_ == 0 && threads_.size() < threadLimit_) {
            threads_.emplace_back([this] { work(); });
        }
    }
    hasNews_.notify_one();
}

bool WorkerThreads::hasTask() const {
    return std::ranges::any_of(queues_, [](const Queue &queue) { return !queue.empty(); });
}

WorkerThreads::Queue &WorkerThreads::firstQueue() {
    return *std::ranges::find_if(queues_, [](const Queue &queue) { return !queue.empty(); });
}

void WorkerThreads::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        ++idle_;
        hasNews_.wait(lock, [this] { return isEnding_ || hasTask(); });
        --idle_;
        if (!hasTask() || (isEnding_ && atEnd_ == AtEnd::dropTasks)) {
            return;
        }
        auto &queue = firstQueue();
        auto task = std::move(queue.front());
        queue.pop_front();
        lock.unlock();
        task();
        task = nullptr; // what it owns is destroyed here, without the lock
        lock.lock();
    }
}

} // namespace lumo
