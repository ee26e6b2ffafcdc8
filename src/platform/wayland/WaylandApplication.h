#pragma once

#include "platform/Application.h"

#include <functional>

namespace lumo::wayland {

class WaylandWorkspace;

// This program among the others of the session.
class WaylandApplication final : public Application {
  public:
    // Ends the program by calling the function. The workspace outlives the object.
    WaylandApplication(WaylandWorkspace &workspace, std::function<void()> terminate);

    // Task bars go by what each window says of itself.
    void setActivationPolicy(ActivationPolicy) override {}
    void activateIgnoringOtherApps() override;
    void terminate() override { terminate_(); }
    Handle onReopen(std::function<void()> observer) override;

  private:
    WaylandWorkspace &workspace_;
    std::function<void()> terminate_;
};

} // namespace lumo::wayland
