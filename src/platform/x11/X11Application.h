#pragma once

#include "platform/Application.h"

#include <functional>

namespace lumo::x11 {

class SingleInstance;
class X11Workspace;

// This program among the others on the display.
class X11Application final : public Application {
  public:
    // Ends the program by calling the function. The arguments outlive the object.
    X11Application(SingleInstance &instance, X11Workspace &workspace,
                   std::function<void()> terminate);

    // Task bars go by what each window says of itself.
    void setActivationPolicy(ActivationPolicy) override {}
    void activateIgnoringOtherApps() override;
    void terminate() override { terminate_(); }
    Handle onReopen(std::function<void()> observer) override;

  private:
    SingleInstance &instance_;
    X11Workspace &workspace_;
    std::function<void()> terminate_;
};

} // namespace lumo::x11
