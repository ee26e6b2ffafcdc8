#include "overlay/ScreenGeometry.h"

#include "support/Invariant.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

// Tells a strip from the other windows of the program that draws it by its place and shape.
bool isStrip(const Rect &local, const Rect &screenFrame) {
    constexpr double edgeReach = 8;
    constexpr double minSide = 80;
    const double width = std::max(screenFrame.width, 1.0);
    const double height = std::max(screenFrame.height, 1.0);
    const bool touchesEdge = local.x <= edgeReach || local.maxX() >= width - edgeReach;
    return local.width > minSide && local.height > minSide && touchesEdge &&
           local.width <= 0.42 * width && local.height >= 0.2 * height;
}

std::int64_t rounded(double value) {
    const double whole = std::round(value);
    require(whole >= -0x1p63 && whole < 0x1p63, "an exclusion rectangle is out of range");
    return static_cast<std::int64_t>(whole);
}

} // namespace

std::uint32_t displayID(const Screen &screen) {
    return screen.number.value_or(0);
}

double highestScreenEdge(const std::vector<Screen> &screens) {
    if (screens.empty()) {
        return 0;
    }
    return std::ranges::max(screens, {}, [](const Screen &screen) { return screen.frame.maxY(); })
        .frame.maxY();
}

Rect screenRect(const Rect &rect, double highestEdge) {
    return {rect.x, highestEdge - rect.y - rect.height, rect.width, rect.height};
}

Rect displayLocalRect(const Rect &windowBounds, const Rect &screenFrame, double highestEdge) {
    return screenRect(windowBounds, highestEdge)
        .intersection(screenFrame)
        .translated(-screenFrame.x, -screenFrame.y);
}

std::vector<Rect> stripsOnScreen(const Rect &screenFrame, const std::vector<Rect> &windowBounds,
                                 double highestEdge) {
    constexpr double margin = 4;
    std::vector<Rect> strips;
    for (const auto &bounds : windowBounds) {
        const Rect local = displayLocalRect(bounds, screenFrame, highestEdge);
        if (local.isEmpty() || !isStrip(local, screenFrame)) {
            continue;
        }
        const Rect grown = local.inset(-margin, -margin)
                               .intersection({0, 0, screenFrame.width, screenFrame.height});
        if (!grown.isEmpty()) {
            strips.push_back(grown.integral());
        }
    }
    return strips;
}

std::string exclusionSignature(const std::vector<Rect> &rects) {
    if (rects.empty()) {
        return "none";
    }
    std::string signature;
    for (const auto &rect : rects) {
        if (!signature.empty()) {
            signature += '|';
        }
        signature += std::to_string(rounded(rect.x)) + ',' + std::to_string(rounded(rect.y)) + ',' +
                     std::to_string(rounded(rect.width)) + ',' +
                     std::to_string(rounded(rect.height));
    }
    return signature;
}

} // namespace lumo
