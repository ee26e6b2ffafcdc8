#pragma once

#include "platform/wayland/client/ProtocolPointers.h"

#include <functional>

namespace lumo::wayland {

struct SurfaceFactories;

// How large the part of a display is that panels leave free, from a surface that would fill it and
// is never shown. Main thread only.
class PanelProbe {
  public:
    // Calls the function after width() and height() have become different. The factories outlive
    // the object.
    PanelProbe(const SurfaceFactories &factories, wl_output *output, std::function<void()> changed);
    ~PanelProbe();
    PanelProbe(const PanelProbe &) = delete;
    PanelProbe &operator=(const PanelProbe &) = delete;

    // In points; 0 until the compositor has said.
    int width() const { return width_; }
    int height() const { return height_; }

  private:
    std::function<void()> changed_;
    ProtocolPointer<wl_surface> surface_;
    ProtocolPointer<zwlr_layer_surface_v1> layerSurface_;
    int width_ = 0;
    int height_ = 0;
};

} // namespace lumo::wayland
