#pragma once

#include "platform/x11/painting/BackdropRenderer.h"
#include "support/Lifetime.h"
#include "support/Signal.h"
#include "support/WorkerThreads.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;
class GlDisplays;

// Live blur by OpenGL, whose libraries are loaded when it is first started, and which is only ever
// talked to on a thread of its own, over an X connection of its own. Main thread only; waits for
// nothing after construction but the thread's end.
class GlService {
  public:
    enum class State {
        idle,     // not started, or stopped, or failed though it had worked before
        starting, // renderers can be made; if it turns out to be impossible, they fail
        ready,
        refused, // there is none here that is worth it
    };

    // For pixmaps of that depth. Unless software will do, OpenGL that is drawn by the processor is
    // refused. The arguments outlive the object. Waits for the server.
    GlService(Connection &connection, MainLoop &mainLoop, std::uint8_t depth, bool softwareWillDo);
    ~GlService();
    GlService(const GlService &) = delete;
    GlService &operator=(const GlService &) = delete;

    State state() const { return state_; }

    // Why the last start failed; empty when it did not.
    const std::string &problem() const { return problem_; }

    // Begins to get ready, if it is idle.
    void start();

    // Lets go of everything in the graphics hardware. Renderers that are still there fail.
    void stop();

    // Calls the observer when it has become ready or that has failed.
    Handle onStarted(std::function<void()> observer) {
        return started_.subscribe(std::move(observer));
    }

    // A renderer, when it is starting or ready. The rendering outlives it.
    std::unique_ptr<BackdropRenderer> make();

  private:
    bool hasHardware() const;
    void started(const std::string &problem);

    Connection &connection_;
    MainLoop &mainLoop_;
    std::uint8_t depth_;
    bool softwareWillDo_;
    State state_ = State::idle;
    std::string problem_;
    bool hasWorked_ = false;
    int lastRenderer_ = 0;
    Signal<> started_;
    std::unique_ptr<GlDisplays> displays_;  // the thread's
    std::unique_ptr<WorkerThreads> thread_; // one, from the first start
    Lifetime lifetime_;
};

} // namespace lumo::x11
