#pragma once

#include "desktop/LumoProcess.h"
#include "desktop/Picture.h"
#include "reference/EffectLook.h"

#include <cstdint>
#include <string>

namespace lumo::desktop {

// What the program is told to show, and how that looks by the formulas.
struct Look : reference::EffectLook {
    Preferences preferences() const;
    std::string describe() const;

    // A pixel as it must be shown where the grain has that grey. Without a live backdrop only.
    Colour over(Colour beneath, std::uint8_t grain) const;

    // The same for all of a display, given what lies beneath its overlay.
    Picture over(const Picture &beneath) const;
};

// The grain at a place of a display of that width in pixels, from its top left corner.
std::uint8_t grainAt(int width, Spot spot);

// Rounding in three steps at 8 bits per channel stays within this.
constexpr int tolerance = 2;

} // namespace lumo::desktop
