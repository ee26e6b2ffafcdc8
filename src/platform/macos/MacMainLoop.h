#pragma once

#include "platform/MainLoop.h"

#include <memory>

namespace lumo::macos {

// The main run loop, the main queue and the system's own background queues. The application object
// turns the loop.
class MacMainLoop final : public MainLoop {
  public:
    MacMainLoop();
    ~MacMainLoop() override;
    MacMainLoop(const MacMainLoop &) = delete;
    MacMainLoop &operator=(const MacMainLoop &) = delete;

    double now() const override;
    void post(std::function<void()> task) override;
    Handle after(double seconds, std::function<void()> task) override;
    Handle every(double seconds, std::function<void()> task) override;
    void runInBackground(QualityOfService quality, std::function<void()> task) override;

    // Calls the function on the main thread when the signal arrives at the process.
    Handle onUnixSignal(int signal, std::function<void()> function);

  private:
    std::shared_ptr<const bool> alive_;
};

} // namespace lumo::macos
