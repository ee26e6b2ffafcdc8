#pragma once

#include "platform/MainLoop.h"
#include "platform/x11/LayerGroup.h"
#include "platform/x11/Painter.h"
#include "platform/x11/SceneBelow.h"

#include <xcb/xcb.h>

#include <optional>

namespace lumo::x11 {

// For where nobody blends: shows a picture of what lies beneath with the layers drawn over it, and
// draws what changes beneath anew, at most once per refresh. Opaque, so that a compositing manager
// that comes along shows the same.
class FlatPainter final : public Painter {
  public:
    // The depth and format are those of the window.
    FlatPainter(const DrawingTools &tools, MainLoop &mainLoop, WindowSurfaces &surfaces,
                Wallpaper &wallpaper, SceneBelow::LowerWindows lowerWindows, xcb_window_t window,
                std::uint8_t depth, xcb_render_pictformat_t format);

    void paint(const Appearance &appearance) override;
    void present() override;
    void suspend() override;

  private:
    void makeCanvas(const PixelRect &area);
    void scheduleRedraw();
    void redraw();

    DrawingTools tools_;
    Connection &connection_;
    MainLoop &mainLoop_;
    SceneBelow scene_;
    xcb_window_t window_;
    std::uint8_t depth_;
    xcb_render_pictformat_t format_;
    std::optional<Appearance> painted_;
    LayerGroup layers_;
    OwnedPixmap canvas_; // what the window shows, its background as well
    OwnedPicture canvasPicture_;
    OwnedGraphicsContext context_;
    bool hasChanges_ = false; // painted but not presented
    bool isSuspended_ = true;
    double paintedAt_ = 0; // seconds
    Handle sceneChanges_;
    Handle nextRedraw_;
};

} // namespace lumo::x11
