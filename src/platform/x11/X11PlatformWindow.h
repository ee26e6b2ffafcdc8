#pragma once

#include "drawing/PointSpace.h"
#include "platform/OverlayWindows.h"
#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/painting/Painter.h"
#include "platform/x11/painting/SceneBelow.h"
#include "platform/x11/placement/Placement.h"
#include "platform/x11/server/OverlaySurface.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <functional>
#include <memory>

namespace lumo {
class MainLoop;
class Screens;
} // namespace lumo

namespace lumo::freedesktop {
class LogOnce;
}

namespace lumo::x11 {

class BackdropRenderer;
class BackdropRenderers;
class CompositorWatch;
class Connection;
class PlacementChoice;
class Redirection;
class Wallpaper;
class WindowMirror;
class WindowSurfaces;

// What all overlay windows share; all of it outlives them.
struct OverlaySurroundings {
    Connection &connection;
    WindowMirror &mirror;
    Screens &screens;
    std::function<drawing::PointSpace()> pointSpace; // the one in force
    MainLoop &mainLoop;
    freedesktop::LogOnce &log;
    DrawingTools drawing;
    CompositorWatch &compositor;
    Redirection &redirection;
    WindowSurfaces &surfaces;
    Wallpaper &wallpaper;
    BackdropRenderers &backdropRenderers;
    PlacementChoice &placementChoice;
};

// One overlay as an X window, of the kind that the placement needs. What is asked of it is kept,
// and sent to the server as one difference from what that was told before: first what shows the
// least, so that no state in between is ever seen. What takes long to paint is waited for, in the
// loop, before anything that would uncover it is asked for. Where the server cannot let clicks
// through, or nothing can draw the overlay, it never comes on screen.
class X11PlatformWindow final : public PlatformWindow {
  public:
    // Waits for the server.
    X11PlatformWindow(OverlaySurroundings &surroundings, const Rect &frame);

    // Another one after another placement was chosen that needs another kind of X window.
    std::int64_t windowNumber() const override { return window_->id(); }

    Rect frame() const override { return wanted_.frame; }
    void setFrame(const Rect &frame) override;
    int level() const override { return level_; }
    void setLevel(int level) override;
    double alphaValue() const override { return wanted_.alpha; }
    void setAlphaValue(double alpha) override;
    void orderFront() override;
    void orderBelow(std::uint32_t windowNumber) override;
    void orderOut() override;
    std::optional<double> backingScaleFactor() const override;
    void commit(const LayerTree &tree) override;

  private:
    struct Wanted {
        Rect frame;
        double alpha = 1;
        Order order;
        LayerTree tree;
    };

    std::unique_ptr<OverlaySurface> makeWindow() const;
    std::unique_ptr<Placement> makePlacement();
    void usePlacement();
    void setOrder(const Order &order);
    void requestPush();
    void followWindows();
    void push();
    void show(const drawing::PixelRect &area, const Order &order);
    void hide(const drawing::PixelRect &area, const Order &order);
    void place(const drawing::PixelRect &area, const Order &order);
    void preparePainter(bool withBackdrop);
    std::unique_ptr<Painter> makePainter(bool withBackdrop);
    std::unique_ptr<Painter> makeScenePainter(std::unique_ptr<BackdropRenderer> renderer,
                                              SceneBelow::Windows windows);
    void dropPainter();
    drawing::PlacedLayers appearance() const;
    void damageWhatComesOut(const Order &order);

    OverlaySurroundings &surroundings_;
    Connection &connection_;
    Handle redirection_;
    bool mayBeShown_ = false; // clicks are known to go through

    Wanted wanted_;
    int level_ = 0;
    bool isPushRequested_ = false;
    bool isPainting_ = false;    // the rest of a push follows when that is done
    bool isPushAwaited_ = false; // another one then

    std::unique_ptr<OverlaySurface> window_;
    std::unique_ptr<OverlaySurface> retired_; // shows until its successor does
    Order placed_;                            // what the server was last asked for

    bool isPlacementStale_ = false; // another one is to be used from the next push on
    bool isAwaitingPlace_ = false;  // not to be seen before it is where it belongs
    std::unique_ptr<Placement> placement_;
    std::unique_ptr<Painter> painter_;
    bool paintsBackdrop_ = false; // the painter was made for a tree that shows a backdrop
    Handle compositorChanges_;
    Handle choiceChanges_;
    Handle mirrorChanges_;
    Handle screenChanges_;
    Handle rendererImprovements_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
