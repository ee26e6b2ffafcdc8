#pragma once

#include "drawing/PixelRect.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumo::x11 {

// A display, or several that show the same.
struct Monitor {
    drawing::PixelRect area;
    bool isPrimary = false;
    std::string name;
    std::string description; // what its display says about itself; empty when nothing

    bool operator==(const Monitor &) const = default;
};

// Monitors that have no pixel in common, so that none is darkened twice. One that shows all of
// another becomes one with it, under the name of the one that comes first; of two that overlap
// otherwise the later one loses the common part, or where a rectangle would not be left of it, they
// become one around both. Each is clipped to the root window, since nothing shows beyond it; empty
// ones are dropped.
std::vector<Monitor> apart(std::vector<Monitor> monitors, const drawing::PixelRect &root);

// A number for each monitor by its name and description: none is 0 and no two are the same. A
// monitor gets the same one in whatever order and company it is, unless two of them clash.
std::vector<std::uint32_t> identifiersOf(const std::vector<Monitor> &monitors);

} // namespace lumo::x11
