#pragma once

namespace lumo::x11 {

// A rectangle in pixels, origin at the top left of the root window, y pointing down.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int maxX() const { return x + width; }
    int maxY() const { return y + height; }

    bool operator==(const PixelRect &) const = default;
};

} // namespace lumo::x11
