#include "platform/freedesktop/DotPicture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace lumo::freedesktop {

namespace {

// The usual status area is 22 points high; there the dot has the size of the character in the
// title's font, whose diameter is about 0.6 of its point size.
constexpr double usualSide = 22;
constexpr double diameterOfPointSize = 0.62;
constexpr double rimWidth = 1.4; // points
constexpr double rimOpacity = 0.8;

std::uint8_t byte(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

// How much of a pixel at this distance from the centre a disc covers.
double coverage(double distance, double radius) {
    return std::clamp(radius - distance + 0.5, 0.0, 1.0);
}

double luminance(const Color &color) {
    return 0.2126 * color.red + 0.7152 * color.green + 0.0722 * color.blue;
}

} // namespace

Image dotPicture(const StatusTitle &title, int side) {
    const double scale = side / usualSide;
    const double radius = title.pointSize * diameterOfPointSize / 2 * scale;
    const double rimRadius = radius + rimWidth * scale;
    const double center = side / 2.0;
    const double middle = center - title.baselineOffset * scale / 2;
    const double rimShade = luminance(title.color) > 0.5 ? 0 : 1;
    Image image{side, side, {}};
    image.pixels.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 4);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - center, y + 0.5 - middle);
            const double disc = coverage(distance, radius) * title.color.alpha;
            const double rim = coverage(distance, rimRadius) * rimOpacity * (1 - disc);
            for (const double color : {title.color.red, title.color.green, title.color.blue}) {
                image.pixels.push_back(byte(color * disc + rimShade * rim));
            }
            image.pixels.push_back(byte(disc + rim));
        }
    }
    return image;
}

} // namespace lumo::freedesktop
