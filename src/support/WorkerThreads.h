#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace lumo {

// A few threads that run the tasks they are given, urgent ones first and else in the order of
// posting; one thread therefore runs them one after the other. A thread is started when a task
// finds none idle, until the limit is reached. Made and destroyed on one thread.
class WorkerThreads {
  public:
    enum class Priority { urgent, ordinary };

    // What becomes of the tasks that have not begun when the threads end.
    enum class AtEnd { runTasks, dropTasks };

    WorkerThreads(std::size_t threadLimit, AtEnd atEnd);

    // Waits for the threads' end.
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads &) = delete;
    WorkerThreads &operator=(const WorkerThreads &) = delete;

    // May be called from any thread.
    void post(std::function<void()> task, Priority priority = Priority::ordinary);

  private:
    using Queue = std::deque<std::function<void()>>;

    bool hasTask() const;
    Queue &firstQueue();
    void work();

    const std::size_t threadLimit_;
    const AtEnd atEnd_;
    std::mutex mutex_; // guards everything below
    std::condition_variable hasNews_;
    std::array<Queue, 2> queues_; // by priority
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool isEnding_ = false;
};

} // namespace lumo
