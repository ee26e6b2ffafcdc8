#pragma once

#include <cstdint>
#include <optional>

namespace lumo::wayland::kwin {

// The number by which Qt calls the key with this symbol (of xkbcommon-keysyms.h), with these
// modifiers (hotKeyModifier); absent for a symbol that Qt has no number for. The numbers are those
// of Qt::Key and Qt::KeyboardModifier.
std::optional<std::int32_t> qtKey(std::uint32_t symbol, std::uint32_t modifiers);

} // namespace lumo::wayland::kwin
