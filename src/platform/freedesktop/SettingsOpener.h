#pragma once

#include "platform/freedesktop/AsyncCalls.h"
#include "support/Log.h"

namespace lumo::freedesktop {

// Starts the desktop's own settings program, without waiting for it. Main thread only.
class SettingsOpener {
  public:
    // The log outlives the object.
    explicit SettingsOpener(const Log &log)
        : log_(log) {}

    // False when the desktop has none that is known; one that can't be started after all is a line
    // in the log.
    bool open();

  private:
    const Log &log_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
