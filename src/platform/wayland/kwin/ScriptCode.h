#pragma once

namespace lumo::wayland::kwin {

// Code for KWinScript, for KWin 5 and 6.

// Tells what factsOf() reads, at the start and whenever it has become different.
extern const char *const desktopScript;

// Tells how far the pointer has gone to the right, in points, whenever that is a stroke of a shake
// in length, see MouseShakeToggleManager: at most 30 times a second, and never for small motions.
extern const char *const pointerScript;

} // namespace lumo::wayland::kwin
