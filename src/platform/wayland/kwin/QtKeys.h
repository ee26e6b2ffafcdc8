#pragma once

#include <cstdint>
#include <vector>

namespace lumo::wayland::kwin {

// The numbers by which KWin calls the key with these symbols (of xkbcommon-keysyms.h), alone and
// with Shift, when it is pressed with these modifiers (hotKeyModifier): none for a key that it has
// no number for. The numbers are those of Qt::Key and Qt::KeyboardModifier.
//
// Where Shift makes another character, KWin goes by that and leaves out Shift, in some versions. A
// key of the keypad is called by what it types with and without Num Lock, in some versions as if it
// were none of the keypad.
std::vector<std::int32_t> qtKeys(std::uint32_t symbol, std::uint32_t shiftedSymbol,
                                 std::uint32_t modifiers);

} // namespace lumo::wayland::kwin
