#pragma once

#include "platform/OverlayWindows.h"
#include "platform/x11/BackdropRenderers.h"
#include "platform/x11/CompositorWatch.h"
#include "platform/x11/LogOnce.h"
#include "platform/x11/PlacementChoice.h"
#include "platform/x11/Redirection.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/ServerImages.h"
#include "platform/x11/Wallpaper.h"
#include "platform/x11/WindowSurfaces.h"
#include "platform/x11/X11OverlayWindow.h"

namespace lumo::x11 {

// Makes overlays on an X server and keeps what they share. Outlives its overlays.
class X11OverlayWindows final : public OverlayWindows {
  public:
    // The point space is asked for whenever one is needed, and after each change of the screens.
    // All arguments outlive the object. Waits for the server.
    X11OverlayWindows(Connection &connection, WindowMirror &mirror, Screens &screens,
                      std::function<PointSpace()> pointSpace, MainLoop &mainLoop, const Log &log);

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

    // Whether a compositing manager does the blending at the moment.
    bool isCompositing() const { return compositor_.isCompositing(); }

    // In which all that is drawn here is drawn.
    const RenderFormats &formats() const { return formats_; }

    // Whether backdrop layers can be drawn on this server.
    bool canDrawBackdrops() const { return backdropRenderers_.isPossible(); }

  private:
    LogOnce log_;
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
