#pragma once

#include "support/Handle.h"

#include <filesystem>
#include <functional>

namespace lumo::freedesktop {

// Calls the function, from GLib's default context, after the file was made, written, replaced,
// moved or removed, or may be read by others than before; several times for one change, as a rule.
// The folder must exist. Main thread only.
Handle watchFile(const std::filesystem::path &file, std::function<void()> function);

} // namespace lumo::freedesktop
