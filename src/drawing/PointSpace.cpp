#include "drawing/PointSpace.h"

#include <algorithm>
#include <cmath>

namespace lumo::drawing {

PointSpace::PointSpace(const std::vector<PixelRect> &screens, double scale)
    : scale_(scale) {
    if (screens.empty()) {
        return;
    }
    mainBottom_ = screens.front().maxY();
    highestEdge_ =
        std::min_element(screens.begin(), screens.end(), [](const auto &a, const auto &b) {
            return a.y < b.y;
        })->y;
}

Rect PointSpace::windowBounds(const PixelRect &pixels) const {
    return {pixels.x / scale_, (pixels.y - highestEdge_) / scale_, pixels.width / scale_,
            pixels.height / scale_};
}

Rect PointSpace::screenFrame(const PixelRect &pixels) const {
    return {pixels.x / scale_, (mainBottom_ - pixels.maxY()) / scale_, pixels.width / scale_,
            pixels.height / scale_};
}

PixelRect PointSpace::pixelsOfBounds(const Rect &bounds) const {
    const auto pixels = [this](double points) {
        return static_cast<int>(std::lround(points * scale_));
    };
    const int left = pixels(bounds.x);
    const int top = pixels(bounds.y);
    return {left, top + highestEdge_, pixels(bounds.maxX()) - left, pixels(bounds.maxY()) - top};
}

PixelRect PointSpace::pixelsOfFrame(const Rect &frame) const {
    // The same rectangle seen from the top: y down from the main screen's bottom edge.
    auto pixels = pixelsOfBounds({frame.x, -frame.maxY(), frame.width, frame.height});
    pixels.y += mainBottom_ - highestEdge_;
    return pixels;
}

} // namespace lumo::drawing
