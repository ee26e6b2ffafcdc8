#pragma once

#include <memory>

namespace lumo {
class Log;
}

namespace lumo::freedesktop {
class GlibMainLoop;
class SessionBus;
} // namespace lumo::freedesktop

namespace lumo::wayland {

class Compositor;
class Connection;
class WaylandKeyboard;

// What this program knows of the connection's compositor. Waits for it. Null, after one line in the
// log that says why, when no overlay can be shown there, or nobody tells about its windows. The
// arguments outlive the compositor.
std::unique_ptr<Compositor> findCompositor(Connection &connection, const WaylandKeyboard &keyboard,
                                           freedesktop::SessionBus &sessionBus,
                                           freedesktop::GlibMainLoop &mainLoop, const Log &log);

} // namespace lumo::wayland
