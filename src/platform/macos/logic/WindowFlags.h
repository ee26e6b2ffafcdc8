#pragma once

#include <cstdint>

namespace lumo::macos {

// The platform's bits, by its own names.

namespace styleMask {
inline constexpr std::uint64_t titled = 1U << 0U;
inline constexpr std::uint64_t closable = 1U << 1U;
inline constexpr std::uint64_t miniaturizable = 1U << 2U;
inline constexpr std::uint64_t nonactivatingPanel = 1U << 7U;
inline constexpr std::uint64_t fullSizeContentView = 1U << 15U;

inline constexpr std::uint64_t overlay = nonactivatingPanel | fullSizeContentView;
inline constexpr std::uint64_t guidance = titled | closable | fullSizeContentView;
inline constexpr std::uint64_t settings = titled | closable | miniaturizable;
} // namespace styleMask

namespace collectionBehavior {
inline constexpr std::uint64_t canJoinAllSpaces = 1U << 0U;
inline constexpr std::uint64_t managed = 1U << 2U;
inline constexpr std::uint64_t transient = 1U << 3U;

inline constexpr std::uint64_t overlay = canJoinAllSpaces | managed | transient;
} // namespace collectionBehavior

inline constexpr std::int64_t animationBehaviorNone = 2;

namespace windowListOption {
inline constexpr std::uint32_t onScreenOnly = 1U << 0U;
inline constexpr std::uint32_t excludeDesktopElements = 1U << 4U;

inline constexpr std::uint32_t everyday = onScreenOnly | excludeDesktopElements;
} // namespace windowListOption

namespace autoresizing {
inline constexpr std::uint64_t widthSizable = 1U << 1U;
inline constexpr std::uint64_t heightSizable = 1U << 4U;

inline constexpr std::uint64_t both = widthSizable | heightSizable;
} // namespace autoresizing

// How images of one and of four bytes per pixel keep their alpha, as LayerTree's do.
inline constexpr std::uint32_t noAlpha = 0;
inline constexpr std::uint32_t premultipliedLast = 1;

} // namespace lumo::macos
