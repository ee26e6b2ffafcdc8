#pragma once

#include "support/Handle.h"

#include <functional>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::x11 {

class Connection;

// Has the loop dispatch the connection's events whenever some arrive, and send its requests before
// each wait. Calls onLost once, when the server has gone. Both outlive the handle.
Handle watch(freedesktop::GlibMainLoop &loop, Connection &connection, std::function<void()> onLost);

} // namespace lumo::x11
