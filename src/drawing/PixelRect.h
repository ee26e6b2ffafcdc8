#pragma once

#include <algorithm>

namespace lumo::drawing {

// A rectangle in pixels, y pointing down. Its origin is the root window's top left where nothing
// else is said.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int maxX() const { return x + width; }
    int maxY() const { return y + height; }

    bool isEmpty() const { return width <= 0 || height <= 0; }

    // The common part; empty when there is none.
    PixelRect intersection(const PixelRect &other) const {
        const int left = std::max(x, other.x);
        const int top = std::max(y, other.y);
        return {left, top, std::min(maxX(), other.maxX()) - left,
                std::min(maxY(), other.maxY()) - top};
    }

    bool overlaps(const PixelRect &other) const { return !intersection(other).isEmpty(); }

    // The smallest rectangle that contains both; an empty one counts for nothing.
    PixelRect united(const PixelRect &other) const {
        if (isEmpty() || other.isEmpty()) {
            return isEmpty() ? other : *this;
        }
        const int left = std::min(x, other.x);
        const int top = std::min(y, other.y);
        return {left, top, std::max(maxX(), other.maxX()) - left,
                std::max(maxY(), other.maxY()) - top};
    }

    bool operator==(const PixelRect &) const = default;
};

} // namespace lumo::drawing
