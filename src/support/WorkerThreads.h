#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace lumo::drawing {

// One thread that runs what it is given, one after the other. The graphics system may take its time
// and may only be talked to from one thread; the main thread must not wait for it.
class GlThread {
  public:
    GlThread();

    // Runs what is left and ends.
    ~GlThread();
    GlThread(const GlThread &) = delete;
    GlThread &operator=(const GlThread &) = delete;

    void post(std::function<void()> task);

  private:
    void run();

    std::mutex mutex_;
    std::condition_variable hasTask_;
    std::deque<std::function<void()>> tasks_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace lumo::drawing
