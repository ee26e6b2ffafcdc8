#pragma once

#include "platform/Application.h"
#include "platform/MainLoop.h"
#include "support/Signal.h"

#include <functional>

@class LumoApplicationDelegate;

namespace lumo::macos {

// The application object and its delegate.
class MacApplication final : public Application {
  public:
    // Makes the application object. The main loop outlives this object.
    explicit MacApplication(MainLoop &mainLoop);
    ~MacApplication() override;
    MacApplication(const MacApplication &) = delete;
    MacApplication &operator=(const MacApplication &) = delete;

    // Turns the main loop until the program ends, which it does from within: calls the first
    // function once the program has been started, and the second when it is about to end.
    void run(std::function<void()> didFinishLaunching, std::function<void()> willTerminate);

    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
    Handle onReopen(std::function<void()> observer) override;

  private:
    MainLoop &mainLoop_;
    LumoApplicationDelegate *delegate_;
    Signal<> reopened_;
};

} // namespace lumo::macos
