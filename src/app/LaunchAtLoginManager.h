#pragma once

#include "platform/Platform.h"
#include "support/Published.h"

#include <string>

namespace lumo {

// Makes the desktop start the program at login, or not. Main thread only.
class LaunchAtLoginManager {
  public:
    explicit LaunchAtLoginManager(const Platform &platform);

    // What was last achieved here; not read back from the system.
    Published<bool> isEnabled{false};

    // Why the system refused when it was last asked to start the program at login; empty when it
    // did not.
    Published<std::string> refusal{{}};

    // Whether the system did so; what it refuses is logged.
    bool enable();
    bool disable();

  private:
    LoginItem &loginItem_;
    Log &log_;
};

} // namespace lumo
