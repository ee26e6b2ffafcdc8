#pragma once

#include <cstdint>

namespace lumo {

// The bits of the modifier masks that the shortcut settings hold.
namespace shortcutModifier {
inline constexpr std::int64_t shift = 0x200;
inline constexpr std::int64_t command = 0x400;
inline constexpr std::int64_t option = 0x800;
inline constexpr std::int64_t control = 0x1000;
} // namespace shortcutModifier

} // namespace lumo
