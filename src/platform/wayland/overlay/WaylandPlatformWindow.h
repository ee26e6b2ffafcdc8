#pragma once

#include "drawing/PlacedLayers.h"
#include "platform/OverlayWindows.h"
#include "platform/wayland/overlay/LayerSurface.h"
#include "platform/wayland/overlay/OverlayCutOuts.h"
#include "platform/wayland/overlay/PanelProbe.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::wayland {

class WaylandScreens;
class WindowSource;
struct Output;

// What all overlay windows share; all of it outlives them, and what is referred to outlives it.
struct OverlaySurroundings {
    MainLoop &mainLoop;
    WaylandScreens &screens;
    WindowSource &source;
    const SurfaceFactories &factories;
    OwnWindows own;
};

// One overlay as a surface above all windows, with the windows that stay clear cut out of it. What
// is asked for is kept, and the difference is shown once per turn of the main loop; so are changes
// of the windows. While no display has its frame nothing is shown. Main thread only; waits for
// nothing.
class WaylandPlatformWindow final : public PlatformWindow {
  public:
    WaylandPlatformWindow(const OverlaySurroundings &surroundings, std::uint32_t number,
                          const Rect &frame);

    std::int64_t windowNumber() const override { return number_; }
    Rect frame() const override { return frame_; }
    void setFrame(const Rect &frame) override;
    int level() const override { return level_; }
    void setLevel(int level) override;
    double alphaValue() const override { return alpha_; }
    void setAlphaValue(double alpha) override;
    void orderFront() override;
    void orderBelow(std::uint32_t windowNumber) override;
    void orderOut() override;
    std::optional<double> backingScaleFactor() const override;
    void commit(const LayerTree &tree) override;

  private:
    void setOrder(const Order &order);
    void requestPush();
    void push();
    void prepareSurface(const Output &output);
    drawing::PixelRect usableAreaOf(const Output &output) const;
    drawing::Region blurredOn(const Output &output, const drawing::Region &cutOut) const;
    std::shared_ptr<const drawing::PlacedLayers> layersOn(const Output &output);

    const OverlaySurroundings &surroundings_;
    const std::uint32_t number_;
    Rect frame_;
    int level_ = 0;
    double alpha_ = 1;
    Order order_;
    LayerTree tree_;
    bool isPushPosted_ = false;
    std::unique_ptr<LayerSurface> surface_; // while the overlay is ordered in
    std::unique_ptr<PanelProbe> panels_;    // the same, where they have to be probed
    std::uint32_t surfaceOutput_ = 0;       // the output's global that it was made for
    std::shared_ptr<const drawing::PlacedLayers> layers_; // as they were shown last
    std::vector<std::uint32_t> clearWindows_;
    std::array<Handle, 3> changes_;
    Lifetime lifetime_;
};

} // namespace lumo::wayland
