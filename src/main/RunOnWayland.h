#pragma once

#include <optional>

namespace lumo {

class Log;
enum class StartedBy;

namespace freedesktop {
class GlibMainLoop;
}

// Runs the program on the Wayland compositor that the environment names, until it ends; returns the
// exit status, or nothing when none is named that answers.
std::optional<int> runOnWayland(freedesktop::GlibMainLoop &loop, Log &log, StartedBy startedBy);

} // namespace lumo
