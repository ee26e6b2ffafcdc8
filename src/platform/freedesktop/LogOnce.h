#pragma once

#include "support/Log.h"

#include <set>
#include <string>
#include <string_view>

namespace lumo::freedesktop {

// Prints each line the first time only.
class LogOnce {
  public:
    explicit LogOnce(const Log &log)
        : log_(log) {}

    void print(std::string_view line) {
        if (printed_.emplace(line).second) {
            log_.print(line);
        }
    }

  private:
    const Log &log_;
    std::set<std::string> printed_;
};

} // namespace lumo::freedesktop
