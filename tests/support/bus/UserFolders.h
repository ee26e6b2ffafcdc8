#pragma once

#include <filesystem>
#include <string>

namespace lumo::freedesktop {

// The user's and the system's folders for all tests of this program, none of which are the real
// ones: GLib looks them up once. They are set before the first test.
std::filesystem::path userFolder();

// Writes the desktop entry of an application, as "Name=..." and so on, where the system looks for
// them.
void writeDesktopEntry(const std::string &identifier, const std::string &lines);

} // namespace lumo::freedesktop
