#pragma once

#include <cstdint>
#include <optional>

namespace lumo::freedesktop {

// The XKB key code of the key at the position that the virtual key code names on the ANSI layout,
// in any layout of the keyboard; absent for a code that has no such position. On Linux these are
// the kernel's key codes plus 8. Keys that the ANSI layout lacks have the codes from 256 on, with
// the kernel's key code added.
std::optional<std::uint8_t> keycodeOfVirtualKey(std::uint32_t virtualKeyCode);

// The virtual key code of the key with this XKB key code; absent for one that no keyboard has.
std::optional<std::uint16_t> virtualKeyOfKeycode(std::uint32_t keycode);

} // namespace lumo::freedesktop
