#pragma once

namespace lumo::drawing {

// The downsampled grid on which a Gaussian is computed, so that its cost does not grow with its
// deviation: fine enough that the difference cannot be seen.
struct BlurGrid {
    int factor = 1;       // pixels per texel of the grid, a power of two
    double deviation = 0; // of the Gaussian on the grid, in texels
    int radius = 0;       // of the kernel, in texels

    // By how many pixels a change of one pixel spreads.
    int reach() const { return (radius + 2) * factor; }
};

// For a standard deviation in pixels, which is above 0. What bringing the pixels to the grid and
// back blurs by itself is taken off.
BlurGrid blurGrid(double deviation);

} // namespace lumo::drawing
