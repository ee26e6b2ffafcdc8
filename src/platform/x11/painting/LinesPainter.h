#pragma once

#include "platform/x11/painting/Painter.h"
#include "platform/x11/server/ServerResource.h"

#include <optional>

namespace lumo::x11 {

class OverlaySurface;

// For servers that can't compose: opaque lines in the layers' colour across the window, as many of
// its rows as the layers are opaque, with nothing of the window between them. So a part is, on the
// average, as dark as it should be, whatever lies beneath. Grain becomes its mean colour.
class LinesPainter final : public Painter {
  public:
    // Both outlive the painter.
    LinesPainter(Connection &connection, OverlaySurface &window);
    ~LinesPainter() override;

    void paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) override;
    void present() override;
    void suspend() override {}

  private:
    OwnedRegion linesOf(const drawing::PlacedLayers &appearance, double opacity) const;
    std::uint32_t pixelOf(const Color &color) const;

    Connection &connection_;
    OverlaySurface &window_;
    std::optional<drawing::PlacedLayers> painted_;
    bool isPresented_ = false;
    OwnedRegion lines_; // to be presented
};

} // namespace lumo::x11
