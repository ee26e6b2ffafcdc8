#pragma once

#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/LayerGroup.h"

namespace lumo::x11 {

// Has the X server draw the plain layers over the scene, and no backdrop layers.
class FlatRenderer final : public BackdropRenderer {
  public:
    explicit FlatRenderer(const DrawingTools &tools)
        : tools_(tools) {}

    bool needsSceneApart() const override { return false; }
    void prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) override;
    int reach() const override { return 0; }
    void render(const std::vector<drawing::PixelRect> &damage,
                std::function<void(bool succeeded)> done) override;
    void cancel() override {}

  private:
    DrawingTools tools_;
    RenderTarget target_;
    LayerGroup layers_;
};

} // namespace lumo::x11
