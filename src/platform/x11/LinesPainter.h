#pragma once

#include "platform/x11/Painter.h"
#include "platform/x11/ServerResource.h"

#include <optional>

namespace lumo::x11 {

class OverlayXWindow;

// For servers that can't compose: opaque lines in the layers' colour across the window, as many of
// its rows as the layers are opaque, with nothing of the window between them. So a part is, on the
// average, as dark as it should be, whatever lies beneath. Grain becomes its mean colour.
class LinesPainter final : public Painter {
  public:
    // Both outlive the painter.
    LinesPainter(Connection &connection, OverlayXWindow &window);
    ~LinesPainter() override;

    void paint(const Appearance &appearance, std::function<void()> painted) override;
    void present() override;
    void suspend() override {}

  private:
    OwnedRegion linesOf(const Appearance &appearance, double opacity) const;
    std::uint32_t pixelOf(const Color &color) const;

    Connection &connection_;
    OverlayXWindow &window_;
    std::optional<Appearance> painted_;
    bool isPresented_ = false;
    OwnedRegion lines_; // to be presented
};

} // namespace lumo::x11
