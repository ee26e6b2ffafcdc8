#include "platform/x11/painting/GlxSurface.h"

namespace lumo::x11 {

GlxSurface::GlxSurface(GlxDevice &device, xcb_pixmap_t scene, xcb_pixmap_t canvas)
    : device_(device)
    , scene_(device.makeSource(scene))
    , canvas_(device.makeTarget(canvas)) {
}

GlxSurface::~GlxSurface() {
    device_.rest();
    device_.release(scene_);
    device_.release(canvas_);
}

} // namespace lumo::x11
