#pragma once

namespace lumo {

struct Platform;
struct ToolkitHooks;

namespace freedesktop {
class GlibMainLoop;
class SessionBus;
} // namespace freedesktop

// Runs the program on a freedesktop system until it is quit, or a signal or the loss of the desktop
// ends it; returns the exit status. The hooks come without what all such systems share: the
// appearance and the trimming of memory.
int runDelegate(freedesktop::GlibMainLoop &loop, freedesktop::SessionBus &sessionBus,
                const Platform &platform, ToolkitHooks hooks);

} // namespace lumo
