#include "ui/ScreenPlaces.h"

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

// In pixels from the top left of all screens.
struct PixelArea {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

PixelArea pixelsOf(const ToolkitScreen &screen) {
    return {static_cast<double>(screen.area.x()), static_cast<double>(screen.area.y()),
            screen.area.width() * screen.pixelsPerUnit,
            screen.area.height() * screen.pixelsPerUnit};
}

// Turns points that count up from the main screen's bottom edge into pixels that count down.
PixelArea pixelsOf(const Rect &points, double scale, double mainBottom) {
    return {points.x * scale, mainBottom - points.maxY() * scale, points.width * scale,
            points.height * scale};
}

// The toolkit counts in whole units.
bool isNearly(const PixelArea &one, const PixelArea &other) {
    constexpr double tolerance = 3;
    return std::abs(one.x - other.x) < tolerance && std::abs(one.y - other.y) < tolerance &&
           std::abs(one.width - other.width) < tolerance &&
           std::abs(one.height - other.height) < tolerance;
}

// Where the platform's main screen ends, in pixels from the top: the one place for which every
// screen of the platform's is one of the toolkit's.
double mainBottom(const std::vector<Screen> &screens,
                  const std::vector<ToolkitScreen> &toolkitScreens) {
    const double scale = screens.front().backingScaleFactor;
    const auto bottomOf = [](const ToolkitScreen &screen) {
        return pixelsOf(screen).y + pixelsOf(screen).height;
    };
    for (const auto &candidate : toolkitScreens) {
        const double bottom = bottomOf(candidate);
        const bool fits = std::ranges::all_of(screens, [&](const Screen &screen) {
            return std::ranges::any_of(toolkitScreens, [&](const ToolkitScreen &other) {
                return isNearly(pixelsOf(screen.frame, scale, bottom), pixelsOf(other));
            });
        });
        if (fits) {
            return bottom;
        }
    }
    return bottomOf(toolkitScreens.front());
}

// What of the toolkit's screen is surely on the platform's: the toolkit rounds the size to its
// whole units, which may reach beyond the last pixel.
QRect unitsWithin(const ToolkitScreen &screen, const std::vector<Screen> &screens, double scale,
                  double mainBottom) {
    const auto units = [&](double pixels) {
        return static_cast<int>(std::floor(pixels / screen.pixelsPerUnit));
    };
    for (const auto &candidate : screens) {
        const auto pixels = pixelsOf(candidate.frame, scale, mainBottom);
        if (isNearly(pixels, pixelsOf(screen))) {
            return {screen.area.topLeft(),
                    QSize(units(std::round(pixels.width)), units(std::round(pixels.height)))};
        }
    }
    return screen.area;
}

double distance(const PixelArea &area, double x, double y) {
    const double dx = std::max({area.x - x, 0.0, x - area.x - area.width});
    const double dy = std::max({area.y - y, 0.0, y - area.y - area.height});
    return std::hypot(dx, dy);
}

} // namespace

ToolkitPlace toolkitPlace(const StatusItemPlace &place, const std::vector<Screen> &screens,
                          const std::vector<ToolkitScreen> &toolkitScreens) {
    const double scale = screens.front().backingScaleFactor;
    const double bottom = mainBottom(screens, toolkitScreens);
    const auto anchor =
        pixelsOf(place.item.value_or(Rect{place.pointer.x, place.pointer.y, 0, 0}), scale, bottom);
    const double middleX = anchor.x + anchor.width / 2;
    const double middleY = anchor.y + anchor.height / 2;
    const auto &screen = *std::ranges::min_element(toolkitScreens, {}, [&](const auto &each) {
        return distance(pixelsOf(each), middleX, middleY);
    });
    const auto unit = [&](double pixel, int origin) {
        return origin + static_cast<int>(std::lround((pixel - origin) / screen.pixelsPerUnit));
    };
    const int left = unit(anchor.x, screen.area.x());
    const int top = unit(anchor.y, screen.area.y());
    return {QRect(left, top, unit(anchor.x + anchor.width, screen.area.x()) - left,
                  unit(anchor.y + anchor.height, screen.area.y()) - top),
            unitsWithin(screen, screens, scale, bottom)};
}

QRect popoverArea(const ToolkitPlace &anchor, QSize size) {
    constexpr int gap = 4;
    const auto &screen = anchor.screen;
    const int lastLeft = std::max(screen.x(), screen.x() + screen.width() - size.width());
    const int lastTop = std::max(screen.y(), screen.y() + screen.height() - size.height());
    const int middle = anchor.area.x() + anchor.area.width() / 2;
    const int left = std::clamp(middle - size.width() / 2, screen.x(), lastLeft);
    const int below = anchor.area.y() + anchor.area.height() + gap;
    const int above = anchor.area.y() - gap - size.height();
    const int top = below <= lastTop ? below : above;
    return {QPoint(left, std::clamp(top, screen.y(), lastTop)), size};
}

} // namespace lumo
