#pragma once

namespace lumo {

class Log;
enum class StartedBy;

namespace freedesktop {
class GlibMainLoop;
}

// Runs the program on the X server that the environment names, until it ends; returns the exit
// status, which is 1, after a line that says why, where it cannot run.
int runOnX11(freedesktop::GlibMainLoop &loop, Log &log, StartedBy startedBy);

} // namespace lumo
