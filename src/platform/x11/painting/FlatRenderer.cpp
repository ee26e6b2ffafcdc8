#include "platform/x11/painting/FlatRenderer.h"

#include "platform/x11/server/Connection.h"

namespace lumo::x11 {

void FlatRenderer::prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) {
    layers_ = drawLayers(tools_, appearance);
    target_ = target;
}

void FlatRenderer::render(const std::vector<drawing::PixelRect> & /*damage*/,
                          std::function<void(bool succeeded)> done) {
    xcb_render_composite(tools_.connection, XCB_RENDER_PICT_OP_OVER, layers_.picture.id(), XCB_NONE,
                         target_.canvas, 0, 0, 0, 0, 0, 0,
                         static_cast<std::uint16_t>(target_.width),
                         static_cast<std::uint16_t>(target_.height));
    done(true);
}

} // namespace lumo::x11
