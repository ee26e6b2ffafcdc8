#include "platform/x11/painting/TranslucentPainter.h"

namespace lumo::x11 {

namespace {

// Equal but for where on the root window it is.
bool looksTheSame(const drawing::PlacedLayers &a, const drawing::PlacedLayers &b) {
    return a.area.width == b.area.width && a.area.height == b.area.height &&
           a.frame.size() == b.frame.size() && a.space.scale() == b.space.scale() &&
           a.alpha == b.alpha && a.tree == b.tree;
}

} // namespace

TranslucentPainter::TranslucentPainter(const DrawingTools &tools, xcb_window_t window)
    : tools_(tools)
    , window_(window) {
}

void TranslucentPainter::paint(const drawing::PlacedLayers &appearance,
                               std::function<void()> painted) {
    if (!painted_ || !looksTheSame(*painted_, appearance)) {
        // The window keeps the pixmap alive as its background.
        auto group = drawLayers(tools_, appearance);
        const std::uint32_t background = group.pixmap.id();
        xcb_change_window_attributes(tools_.connection, window_, XCB_CW_BACK_PIXMAP, &background);
        images_ = std::move(group.images);
        painted_ = appearance;
        isPresented_ = false;
    }
    painted();
}

void TranslucentPainter::present() {
    if (!isPresented_) {
        xcb_clear_area(tools_.connection, 0, window_, 0, 0, 0, 0);
        isPresented_ = true;
    }
}

} // namespace lumo::x11
