#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/ApplicationStrips.h"

namespace lumo {

bool OverlayManager::areApplicationStripsEnabled() {
    lastKnownStripsEnabled_ =
        platform_.applicationStrips.areEnabled().value_or(lastKnownStripsEnabled_);
    return lastKnownStripsEnabled_;
}

std::vector<Rect> OverlayManager::exclusionRects(const Screen &screen,
                                                 const FocusContext &context) {
    if (!areApplicationStripsEnabled()) {
        return {};
    }
    std::vector<Rect> bounds;
    for (const auto &window : *context.allWindows) {
        if (platform_.applicationStrips.areDrawnBy(window.ownerName, window.bundleID)) {
            bounds.push_back(window.bounds);
        }
    }
    return stripsOnScreen(screen.frame, bounds, highestScreenEdge(platform_.screens.screens()));
}

} // namespace lumo
