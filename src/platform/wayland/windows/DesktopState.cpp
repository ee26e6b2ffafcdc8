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

} // namespace lumo::wayland
