#pragma once

#include <string_view>
#include <vector>

namespace lumo::freedesktop {

// The desktop entries, without ".desktop", under which a desktop's own settings program may be
// installed, likeliest first. A desktop is told by the value of XDG_CURRENT_DESKTOP: names
// separated by colons, the most specific first. Empty for a desktop that has none or isn't known:
// another desktop's program would not settle anything there.
std::vector<std::string_view> settingsEntriesOf(std::string_view currentDesktop);

} // namespace lumo::freedesktop
