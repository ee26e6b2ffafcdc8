#pragma once

#include "drawing/PixelRect.h"

#include <cstdint>
#include <string>

namespace lumo::wayland::kwin {

// Code for KWinScript, for KWin 5 and 6.

// Tells what factsOf() reads, at the start and whenever it has become different.
extern const char *const desktopScript;

// Tells how far the pointer has gone to the right, in points, whenever that is a stroke of a shake
// in length, see MouseShakeToggleManager: at most 30 times a second, and never for small motions.
extern const char *const pointerScript;

// Has windows of that process and title, which has no quotes, come up above others and in no task
// bar, with the focus: of the area's size, centred at the point, at the edge of the usable area
// that is nearest to it. That is where the user has just opened them from. Panels do not always
// know where they are, so a point that is in none counts as the pointer's place.
std::string placementScript(std::int32_t process, const std::string &title,
                            const drawing::PixelRect &area, const drawing::PixelRect &point);

} // namespace lumo::wayland::kwin
