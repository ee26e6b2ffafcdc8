#pragma once

#include "platform/MainLoop.h"

#include <memory>

namespace lumo {
class WorkerThreads;
}

namespace lumo::freedesktop {

// The main loop on GLib's default context, so that a toolkit which runs that context can take over
// its turning. Timers use the monotonic clock at full resolution. Owns the background threads,
// which end with it; made and destroyed on the main thread.
class GlibMainLoop final : public MainLoop {
  public:
    GlibMainLoop();
    ~GlibMainLoop() override;

    // What is done about a file descriptor.
    struct FileDescriptorWatch {
        std::function<bool()> prepare;  // before each wait; true when dispatch() has work already
        std::function<bool()> dispatch; // reads what has arrived; false ends the watch
    };

    // Runs the functions for a file descriptor that can be read or has been hung up. It stays the
    // caller's and is open for as long as the handle lives.
    Handle watch(int fileDescriptor, FileDescriptorWatch watch);

    // Calls the function on the main thread when the signal arrives at the process: SIGINT,
    // SIGTERM, SIGHUP.
    Handle onUnixSignal(int signal, std::function<void()> function);

    // Has the function turn the default context once, waiting for work, in place of the loop's own
    // way of doing that until the handle is released: for a toolkit that has to know of each wait.
    Handle turnBy(std::function<void()> turn);

    // Runs until quit() and returns the status that was given to it.
    int run();

    // Main thread only.
    void quit(int status);

    double now() const override;
    void post(std::function<void()> task) override;
    Handle after(double seconds, std::function<void()> task) override;
    Handle every(double seconds, std::function<void()> task) override;
    void runInBackground(QualityOfService quality, std::function<void()> task) override;

  private:
    Handle schedule(double first, double interval, std::function<void()> task);

    std::unique_ptr<WorkerThreads> backgroundThreads_;
    std::function<void()> turn_; // empty for the loop's own way
    bool quitting_ = false;
    int status_ = 0;
};

} // namespace lumo::freedesktop
