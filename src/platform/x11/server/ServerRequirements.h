#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumo::x11 {

class Connection;

// Why Lumo can't work on this display at all, in one line for the log; absent when it can. Without
// clicks that go through an overlay, or true colours, it must not show one.
std::optional<std::string> missingRequirement(const Connection &connection);

// What works in a lesser way on this display because the server lacks an extension or has an old
// one, a line for each; empty on an ordinary server.
std::vector<std::string> limitations(const Connection &connection);

} // namespace lumo::x11
