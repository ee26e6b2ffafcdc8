#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::wayland::sway {

// A binding of the user's, as a configuration of sway has it.
struct Binding {
    std::string mode;                // in which it is in force; "default" outside of all others
    std::set<std::string> modifiers; // Control, Mod1, Mod4, Shift and others by their own names
    std::string key;                 // the name of a symbol, or a key code
    bool isKeycode = false;

    bool operator==(const Binding &) const = default;
};

// All bindings of a configuration's text. What it includes is not followed.
std::vector<Binding> bindingsOf(std::string_view configuration);

// The text with what the files that it includes hold in their place; those are looked for from the
// folder on. Reads files.
std::string withIncludes(std::string_view configuration, const std::filesystem::path &folder);

} // namespace lumo::wayland::sway
