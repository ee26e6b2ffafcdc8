#include "support/Geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace lumo {

Rect Rect::null() {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return {infinity, infinity, 0, 0};
}

bool Rect::isNull() const {
    return std::isinf(x) || std::isinf(y);
}

Rect Rect::intersection(const Rect &other) const {
    if (isNull() || other.isNull()) {
        return null();
    }
    const double left = std::max(x, other.x);
    const double bottom = std::max(y, other.y);
    const double right = std::min(maxX(), other.maxX());
    const double top = std::min(maxY(), other.maxY());
    if (right < left || top < bottom) {
        return null();
    }
    return {left, bottom, right - left, top - bottom};
}

Rect Rect::inset(double dx, double dy) const {
    const Rect result{x + dx, y + dy, width - 2 * dx, height - 2 * dy};
    return isNull() || result.width < 0 || result.height < 0 ? null() : result;
}

Rect Rect::integral() const {
    if (isNull()) {
        return *this;
    }
    const double left = std::floor(x);
    const double bottom = std::floor(y);
    return {left, bottom, std::ceil(maxX()) - left, std::ceil(maxY()) - bottom};
}

std::string describe(const Rect &rect) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), "{{%.15g, %.15g}, {%.15g, %.15g}}", rect.x, rect.y,
                  rect.width, rect.height);
    return text.data();
}

} // namespace lumo
