#pragma once

#include <memory>

namespace lumo {
class Log;
}

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland {

class Compositor;
class Connection;

// What this program knows of the connection's compositor. Waits for it. Null, after one line in the
// log that says why, when no overlay can be shown there, or nobody tells about its windows. The
// arguments outlive the compositor.
std::unique_ptr<Compositor> findCompositor(const Connection &connection,
                                           freedesktop::GlibMainLoop &mainLoop, const Log &log);

} // namespace lumo::wayland
