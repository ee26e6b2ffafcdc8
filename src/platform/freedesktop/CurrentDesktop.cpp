#include "platform/freedesktop/CurrentDesktop.h"

#include <glib.h>

#include <ranges>

namespace lumo::freedesktop {

std::string currentDesktop() {
    const char *variable = g_getenv("XDG_CURRENT_DESKTOP");
    return variable != nullptr ? variable : "";
}

std::vector<std::string_view> desktopNames(std::string_view currentDesktop) {
    std::vector<std::string_view> names;
    for (const auto &name : currentDesktop | std::views::split(':')) {
        names.emplace_back(name.begin(), name.end());
    }
    return names;
}

} // namespace lumo::freedesktop
