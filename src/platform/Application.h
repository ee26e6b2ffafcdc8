#pragma once

#include "platform/Workspace.h"
#include "support/Handle.h"

#include <functional>

namespace lumo {

// What has started the program: the user, from a terminal; the desktop, from its menu or at login;
// or a request of another program, which is delivered to it then.
enum class StartedBy { user, desktop, request };

// This program as the desktop sees it. Main thread only.
class Application {
  public:
    virtual ~Application() = default;

    // How the program shows itself, see ActivationPolicy.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    // Gives the program's windows the focus, whatever has it now.
    virtual void activateIgnoringOtherApps() = 0;

    // Ends the program in a later turn of the main loop.
    virtual void terminate() = 0;

    // Calls the observer when the user has started the program once more.
    virtual Handle onReopen(std::function<void()> observer) = 0;
};

} // namespace lumo
