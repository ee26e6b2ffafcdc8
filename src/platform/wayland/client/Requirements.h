#pragma once

#include <optional>
#include <string>

namespace lumo::wayland {

class Connection;

// What keeps this program from showing an overlay on the compositor, as a line for the log; absent
// when nothing does.
std::optional<std::string> missingRequirement(const Connection &connection);

} // namespace lumo::wayland
