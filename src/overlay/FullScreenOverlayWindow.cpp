#include "overlay/FullScreenOverlayWindow.h"

#include "support/Invariant.h"

#include <limits>

namespace lumo {

namespace {

constexpr int normalWindowLevel = 0;

} // namespace

FullScreenOverlayWindow::FullScreenOverlayWindow(OverlayWindows &overlayWindows,
                                                 const Rect &contentRect)
    : window_(overlayWindows.makeWindow(contentRect)) {
}

std::uint32_t FullScreenOverlayWindow::windowNumber() const {
    const std::int64_t number = window_->windowNumber();
    require(number >= 0 && number <= std::numeric_limits<std::uint32_t>::max(),
            "an overlay's window number does not fit 32 bits");
    return static_cast<std::uint32_t>(number);
}

void FullScreenOverlayWindow::orderBelowClearWindow(std::optional<std::uint32_t> clearWindow) {
    if (window_->level() != normalWindowLevel) {
        window_->setLevel(normalWindowLevel);
    }
    if (clearWindow) {
        window_->orderBelow(*clearWindow);
    } else {
        window_->orderFront();
    }
}

} // namespace lumo
