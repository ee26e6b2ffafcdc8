#include "platform/x11/painting/TranslucentPainter.h"

#include "platform/x11/server/OverlaySurface.h"

#include <memory>
#include <utility>

namespace lumo::x11 {

namespace {

// Equal but for where on the root window it is.
bool looksTheSame(const drawing::PlacedLayers &a, const drawing::PlacedLayers &b) {
    return a.area.width == b.area.width && a.area.height == b.area.height &&
           a.frame.size() == b.frame.size() && a.space.scale() == b.space.scale() &&
           a.alpha == b.alpha && a.tree == b.tree;
}

} // namespace

TranslucentPainter::TranslucentPainter(const DrawingTools &tools, OverlaySurface &window)
    : tools_(tools)
    , window_(window) {
}

void TranslucentPainter::paint(const drawing::PlacedLayers &appearance,
                               std::function<void()> painted) {
    if (!painted_ || !looksTheSame(*painted_, appearance)) {
        auto group = drawLayers(tools_, appearance);
        window_.setContents(std::make_shared<OwnedPixmap>(std::move(group.pixmap)));
        images_ = std::move(group.images);
        painted_ = appearance;
        isPresented_ = false;
    }
    painted();
}

void TranslucentPainter::present() {
    if (!isPresented_) {
        window_.present();
        isPresented_ = true;
    }
}

} // namespace lumo::x11
