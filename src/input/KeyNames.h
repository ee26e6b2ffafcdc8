#pragma once

#include <cstdint>
#include <string>

namespace lumo {

// The bits of the modifier masks that the shortcut settings hold.
namespace shortcutModifier {
inline constexpr std::int64_t shift = 0x200;
inline constexpr std::int64_t command = 0x400;
inline constexpr std::int64_t option = 0x800;
inline constexpr std::int64_t control = 0x1000;
} // namespace shortcutModifier

// The name of a virtual key code of the ANSI layout; "Key" and the code in decimal for one that is
// neither a letter nor Return, Tab, Space, Delete, Escape or a function key up to F12.
std::string keyCodeToString(std::int64_t keyCode);

// The symbols of a shortcut modifier mask in the order Command, Option, Control, Shift.
std::string displayedModifiers(std::int64_t modifiers);

} // namespace lumo
