#pragma once

#include "platform/OverlayWindows.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/X11PlatformWindow.h"
#include "platform/x11/painting/BackdropRenderers.h"
#include "platform/x11/painting/CompositorWatch.h"
#include "platform/x11/painting/Redirection.h"
#include "platform/x11/painting/Wallpaper.h"
#include "platform/x11/painting/WindowSurfaces.h"
#include "platform/x11/placement/PlacementChoice.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/ServerImages.h"

namespace lumo::x11 {

// Makes overlays on an X server and keeps what they share. Outlives its overlays.
class X11OverlayWindows final : public OverlayWindows {
  public:
    // The point space is asked for whenever one is needed, and after each change of the screens.
    // All arguments outlive the object. Waits for the server.
    X11OverlayWindows(Connection &connection, WindowMirror &mirror, Screens &screens,
                      std::function<drawing::PointSpace()> pointSpace, MainLoop &mainLoop,
                      const Log &log);

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

    // Whether a compositing manager does the blending at the moment.
    bool isCompositing() const { return compositor_.isCompositing(); }

    // In which all that is drawn here is drawn.
    const RenderFormats &formats() const { return formats_; }

    // Whether backdrop layers can be drawn on this server.
    bool canDrawBackdrops() const { return backdropRenderers_.isPossible(); }

  private:
    freedesktop::LogOnce log_;
    RenderFormats formats_;
    ServerImages images_;
    CompositorWatch compositor_;
    Redirection redirection_;
    WindowSurfaces surfaces_;
    Wallpaper wallpaper_;
    BackdropRenderers backdropRenderers_;
    PlacementChoice placementChoice_;
    OverlaySurroundings surroundings_;
    Handle compositorChanges_;
    Handle screenChanges_;
};

} // namespace lumo::x11
