#pragma once

#include "platform/UpdateFramework.h"

#include <memory>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {

// Whether this build asks the system about updates at all; a distribution may leave that out.
extern const bool hasSystemUpdates;

// The way in which this build asks. The main loop outlives it.
std::unique_ptr<UpdateFramework> makeSystemUpdates(MainLoop &mainLoop);

} // namespace lumo::freedesktop
