#include "drawing/EvenOddParts.h"

#include <algorithm>
#include <utility>

namespace lumo::drawing {

namespace {

// The distinct values of both ends of all spans, cut to 0 and the limit, both included.
std::vector<int> cutPoints(int limit, std::vector<int> values) {
    values.push_back(0);
    values.push_back(limit);
    for (auto &value : values) {
        value = std::clamp(value, 0, limit);
    }
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

bool contains(const PixelRect &rect, int x, int y) {
    return x >= rect.x && x < rect.maxX() && y >= rect.y && y < rect.maxY();
}

} // namespace

std::vector<PixelRect> hiddenParts(const PlacedLayers &appearance) {
    if (!appearance.tree.mask) {
        return {};
    }
    std::vector<PixelRect> rectangles;
    for (const auto &rectangle : appearance.tree.mask->rectangles) {
        rectangles.push_back(appearance.toWindow(rectangle));
    }
    return evenParts(appearance.area.width, appearance.area.height, rectangles);
}

std::vector<PixelRect> evenParts(int width, int height, const std::vector<PixelRect> &rectangles) {
    std::vector<int> xs;
    std::vector<int> ys;
    for (const auto &rect : rectangles) {
        xs.insert(xs.end(), {rect.x, rect.maxX()});
        ys.insert(ys.end(), {rect.y, rect.maxY()});
    }
    xs = cutPoints(width, std::move(xs));
    ys = cutPoints(height, std::move(ys));
    std::vector<PixelRect> parts;
    for (std::size_t row = 0; row + 1 < ys.size(); ++row) {
        bool extends = false;
        for (std::size_t column = 0; column + 1 < xs.size(); ++column) {
            const bool isEven =
                std::ranges::count_if(
                    rectangles,
                    [&](const PixelRect &rect) { return contains(rect, xs[column], ys[row]); }) %
                    2 ==
                0;
            if (isEven && extends) {
                parts.back().width = xs[column + 1] - parts.back().x;
            } else if (isEven) {
                parts.push_back(
                    {xs[column], ys[row], xs[column + 1] - xs[column], ys[row + 1] - ys[row]});
            }
            extends = isEven;
        }
    }
    return parts;
}

} // namespace lumo::drawing
