#pragma once

#include "platform/freedesktop/AsyncCalls.h"
#include "support/Log.h"

#include <string_view>

namespace lumo::freedesktop {

// Starts the programs that URLs are meant for, without waiting for them. Main thread only.
class UrlOpener {
  public:
    // The log outlives the object.
    explicit UrlOpener(const Log &log)
        : log_(log) {}

    // Opens the URL with the user's program for its scheme; one that names a page of System
    // Settings with the desktop's own settings program, which has other pages. False when there is
    // no such program; one that can't be started after all is a line in the log.
    bool open(std::string_view url);

  private:
    const Log &log_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
