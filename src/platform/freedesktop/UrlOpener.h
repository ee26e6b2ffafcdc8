#pragma once

#include "support/Log.h"

#include <memory>
#include <string_view>

namespace lumo::freedesktop {

class Cancellation;

// Starts the programs that URLs are meant for, without waiting for them. Main thread only.
class UrlOpener {
  public:
    // The log outlives the object.
    explicit UrlOpener(const Log &log);
    ~UrlOpener();
    UrlOpener(const UrlOpener &) = delete;
    UrlOpener &operator=(const UrlOpener &) = delete;

    // Opens the URL with the user's program for its scheme; one that names a page of System
    // Settings with the desktop's own settings program, which has other pages. False when there is
    // no such program; one that can't be started after all is a line in the log.
    bool open(std::string_view url);

  private:
    const Log &log_;
    std::unique_ptr<Cancellation> cancellation_;
};

} // namespace lumo::freedesktop
