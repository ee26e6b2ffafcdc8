#pragma once

#include <filesystem>
#include <optional>

namespace lumo::freedesktop {

// The user's configuration folder by freedesktop.org's rules for base directories: XDG_CONFIG_HOME
// where it is an absolute path, and else .config in the folder that HOME names. Absent when neither
// is an absolute path. Read from the environment at every call.
std::optional<std::filesystem::path> userConfigurationFolder();

} // namespace lumo::freedesktop
