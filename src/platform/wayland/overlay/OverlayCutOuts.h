#pragma once

#include "drawing/CutOuts.h"
#include "drawing/PointSpace.h"
#include "drawing/Region.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumo::wayland {

struct DesktopState;
struct Output;

// Where an overlay lies among the windows, as it was asked for.
struct Order {
    enum class Kind { out, front, below };

    Kind kind = Kind::out;
    std::uint32_t reference = 0; // of Kind::below: the window right above it
    int level = 0;               // of Kind::front: 0 is that of ordinary windows

    bool operator==(const Order &) const = default;
};

// What an order comes to for an overlay that lies above all windows.
struct OverlayCutOuts {
    drawing::Region region;                  // in the display's pixels, origin at its top left
    std::vector<std::uint32_t> clearWindows; // which stay clear
};

// What is known of this program's own windows.
struct OwnWindows {
    std::int32_t process = 0;
    std::string roundedTitle = {}; // of those with round corners
    double cornerRadius = 0;       // of these, in points
};

// The pixel grid of one display: its own points, origin at its top left, on a surface of that size
// in pixels.
drawing::PointSpace pixelSpaceOf(const Output &output);

// What stays clear of the overlay that covers the output: the windows that the order says, and
// panels, which leave that area free. While the reference is not among the windows those stay clear
// that did before.
OverlayCutOuts overlayCutOuts(const DesktopState &state, const Output &output,
                              const drawing::PixelRect &usable, const Order &order,
                              bool focusRaises, const OwnWindows &own,
                              const std::vector<std::uint32_t> &clearBefore);

} // namespace lumo::wayland
