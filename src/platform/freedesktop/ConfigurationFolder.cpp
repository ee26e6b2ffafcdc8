#include "platform/freedesktop/ConfigurationFolder.h"

#include <glib.h>

namespace lumo::freedesktop {

namespace {

std::optional<std::filesystem::path> absolutePathIn(const char *variable) {
    const char *value = g_getenv(variable);
    return value != nullptr && value[0] == '/' ? std::optional<std::filesystem::path>(value)
                                               : std::nullopt;
}

} // namespace

// GLib's own look-up differs: it takes relative paths, asks the user database where HOME is unset,
// and remembers what it found.
std::optional<std::filesystem::path> userConfigurationFolder() {
    if (auto folder = absolutePathIn("XDG_CONFIG_HOME")) {
        return folder;
    }
    const auto home = absolutePathIn("HOME");
    return home ? std::optional(*home / ".config") : std::nullopt;
}

} // namespace lumo::freedesktop
