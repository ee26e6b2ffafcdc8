#include "platform/wayland/windows/DesktopState.h"

#include "drawing/Region.h"

#include <algorithm>

namespace lumo::wayland {

const DesktopWindow *DesktopState::find(std::uint32_t identifier) const {
    const auto found = std::ranges::find(windows, identifier, &DesktopWindow::identifier);
    return found != windows.end() ? &*found : nullptr;
}

const DesktopWindow *DesktopState::focused() const {
    const auto found = std::ranges::find(windows, true, &DesktopWindow::isFocused);
    return found != windows.end() ? &*found : nullptr;
}

std::vector<drawing::PixelRect> panelAreas(const drawing::PixelRect &display,
                                           const drawing::PixelRect &usable) {
    return (drawing::Region(display) - drawing::Region(usable)).rectangles();
}

drawing::PixelRect withoutGaps(const drawing::PixelRect &display,
                               const drawing::PixelRect &usableInGaps, int width, int height) {
    const int left = usableInGaps.x - display.x;
    const int top = usableInGaps.y - display.y;
    const int right = display.maxX() - usableInGaps.maxX();
    const int bottom = display.maxY() - usableInGaps.maxY();
    return {left > right ? display.maxX() - width : display.x,
            top > bottom ? display.maxY() - height : display.y, width, height};
}

drawing::PixelRect popoverArea(const drawing::PixelRect &display, const drawing::PixelRect &usable,
                               int width, int height) {
    constexpr int gap = 6; // points
    const int below = display.maxY() - usable.maxY();
    const int above = usable.y - display.y;
    return {usable.maxX() - gap - width,
            below > above ? usable.maxY() - gap - height : usable.y + gap, width, height};
}

} // namespace lumo::wayland
