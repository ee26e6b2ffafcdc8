#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumo::freedesktop {

// XDG_CURRENT_DESKTOP; empty where the session does not set it.
std::string currentDesktop();

// The names in such a value, the most specific first; they point into it.
std::vector<std::string_view> desktopNames(std::string_view currentDesktop);

} // namespace lumo::freedesktop
