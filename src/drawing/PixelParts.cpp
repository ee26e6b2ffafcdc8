#include "drawing/PixelParts.h"

#include <algorithm>
#include <cstddef>

namespace lumo::drawing {

namespace {

// More than these cost more to keep apart than to draw as one.
constexpr std::size_t mostRectangles = 16;

} // namespace

void PixelParts::add(PixelRect rect) {
    if (rect.isEmpty()) {
        return;
    }
    const auto meets = [&](const PixelRect &other) { return !rect.intersection(other).isEmpty(); };
    for (auto found = std::ranges::find_if(rectangles_, meets); found != rectangles_.end();
         found = std::ranges::find_if(rectangles_, meets)) {
        rect = rect.united(*found);
        rectangles_.erase(found);
    }
    rectangles_.push_back(rect);
    if (rectangles_.size() > mostRectangles) {
        for (const auto &other : rectangles_) {
            rect = rect.united(other);
        }
        rectangles_ = {rect};
    }
}

void PixelParts::add(const PixelParts &others) {
    for (const auto &rect : others.rectangles_) {
        add(rect);
    }
}

bool PixelParts::meets(const PixelRect &rect) const {
    return std::ranges::any_of(
        rectangles_, [&](const PixelRect &part) { return !part.intersection(rect).isEmpty(); });
}

PixelParts PixelParts::grown(int reach, const PixelRect &limit) const {
    PixelParts result;
    for (const auto &rect : rectangles_) {
        result.add(PixelRect{rect.x - reach, rect.y - reach, rect.width + 2 * reach,
                             rect.height + 2 * reach}
                       .intersection(limit));
    }
    return result;
}

} // namespace lumo::drawing
