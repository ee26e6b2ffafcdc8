#pragma once

#include "support/Handle.h"

#include <functional>

namespace lumo {

// What tells of every change of the desktop: of its windows, their order and the focus, of the
// applications, the displays and the spaces. Main thread only.
class DesktopChanges {
  public:
    virtual ~DesktopChanges() = default;

    // Calls the observer on the main thread whenever WindowServer, Workspace or Screens may return
    // something else than before. That may be more often than they do.
    virtual Handle onChange(std::function<void()> observer) = 0;
};

} // namespace lumo
