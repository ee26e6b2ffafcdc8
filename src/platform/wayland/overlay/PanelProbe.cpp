#include "platform/wayland/overlay/PanelProbe.h"

#include "platform/wayland/overlay/LayerSurface.h"

#include <layer-shell-client-protocol.h>
#include <wayland-client.h>

#include <tuple>
#include <utility>

namespace lumo::wayland {

PanelProbe::PanelProbe(const SurfaceFactories &factories, wl_output *output,
                       std::function<void()> changed)
    : changed_(std::move(changed))
    , surface_(wl_compositor_create_surface(factories.compositor.get()))
    , layerSurface_(
          zwlr_layer_shell_v1_get_layer_surface(factories.layerShell.get(), surface_.get(), output,
                                                ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND, "lumo")) {
    constexpr std::uint32_t allEdges =
        ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
        ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
    zwlr_layer_surface_v1_set_anchor(layerSurface_.get(), allEdges);
    static const zwlr_layer_surface_v1_listener listener = {
        [](void *data, zwlr_layer_surface_v1 *object, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
            zwlr_layer_surface_v1_ack_configure(object, serial);
            auto &self = *static_cast<PanelProbe *>(data);
            const std::pair size = {static_cast<int>(width), static_cast<int>(height)};
            if (size != std::pair(self.width_, self.height_)) {
                std::tie(self.width_, self.height_) = size;
                self.changed_();
            }
        },
        [](void *, zwlr_layer_surface_v1 *) {}};
    zwlr_layer_surface_v1_add_listener(layerSurface_.get(), &listener, this);
    wl_surface_commit(surface_.get());
}

PanelProbe::~PanelProbe() {
    layerSurface_.reset();
}

} // namespace lumo::wayland
