#pragma once

#include <algorithm>
#include <string>

namespace lumo::freedesktop {

// The message bus as a peer on itself; its interface is called as it is.
inline constexpr const char *busName = "org.freedesktop.DBus";
inline constexpr const char *busPath = "/org/freedesktop/DBus";

// Where launchers expect the object of an application with that name on the bus.
inline std::string objectPathOf(const std::string &name) {
    std::string path = "/" + name;
    std::ranges::replace(path, '.', '/');
    return path;
}

} // namespace lumo::freedesktop
