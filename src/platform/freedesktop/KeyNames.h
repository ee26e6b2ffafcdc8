#pragma once

#include <cstdint>
#include <string>

namespace lumo::freedesktop {

// What a key is called that has these symbols (of xkbcommon-keysyms.h), alone and with Shift: by
// the character that it types, in upper case, else by what is printed on it. Empty for a key
// without a symbol.
std::string keyNameOf(std::uint32_t keysym, std::uint32_t shiftedKeysym);

} // namespace lumo::freedesktop
