#pragma once

#include "platform/OverlayWindows.h"
#import "platform/macos/LayerRenderer.h"
#import "platform/macos/LumoOverlayWindow.h"
#include "platform/macos/MacOverlayWindows.h"

namespace lumo::macos {

// One overlay window and the view that shows its layers.
class MacOverlayWindow final : public PlatformWindow {
  public:
    // The overlays, of which it is one until its end, outlive it.
    MacOverlayWindow(MacOverlayWindows &overlays, const Rect &frame);
    ~MacOverlayWindow() override;
    MacOverlayWindow(const MacOverlayWindow &) = delete;
    MacOverlayWindow &operator=(const MacOverlayWindow &) = delete;

    std::int64_t windowNumber() const override;
    Rect frame() const override;
    void setFrame(const Rect &frame) override;
    int level() const override;
    void setLevel(int level) override;
    double alphaValue() const override;
    void setAlphaValue(double alpha) override;
    void orderFront() override;
    void orderBelow(std::uint32_t windowNumber) override;
    void orderOut() override;
    std::optional<double> backingScaleFactor() const override;
    void commit(const LayerTree &tree) override;

  private:
    MacOverlayWindows &overlays_;
    LumoOverlayWindow *window_;
    std::uint32_t listedNumber_;
    LayerRenderer renderer_;
};

} // namespace lumo::macos
