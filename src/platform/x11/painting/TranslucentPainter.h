#pragma once

#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/painting/Painter.h"

#include <optional>

namespace lumo::x11 {

class OverlaySurface;

// For windows with alpha under a compositing manager, which does the blending with what lies
// beneath. Draws once per change of the appearance and then leaves everything to the server.
class TranslucentPainter final : public Painter {
  public:
    TranslucentPainter(const DrawingTools &tools, OverlaySurface &window);

    void paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) override;
    void present() override;
    void suspend() override {}

  private:
    DrawingTools tools_;
    OverlaySurface &window_;
    std::optional<drawing::PlacedLayers> painted_;
    std::vector<std::shared_ptr<const ServerImage>> images_;
    bool isPresented_ = true;
};

} // namespace lumo::x11
