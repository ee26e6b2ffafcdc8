#pragma once

#include "drawing/PointSpace.h"
#include "platform/OverlayWindows.h"
#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/painting/Painter.h"
#include "platform/x11/painting/SceneBelow.h"
#include "platform/x11/placement/Placement.h"
#include "platform/x11/placement/PlacementKind.h"
#include "platform/x11/server/OverlaySurface.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <functional>
#include <memory>
#include <optional>

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
// loop, before anything that would uncover it is asked for; so is the server's confirmation that
// clicks go through. Where the server cannot do that, has no memory for an overlay of that size, or
// nothing can draw the overlay, it never comes on screen. Main thread only; waits for nothing.
class X11PlatformWindow final : public PlatformWindow {
  public:
    X11PlatformWindow(OverlaySurroundings &surroundings, const Rect &frame);

    // Another one after another placement was chosen that needs another kind of X window.
    std::int64_t windowNumber() const override { return surface_->id(); }

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

    // What the surface shows.
    enum class Stage {
        out,           // nothing: it is not mapped
        awaitingPlace, // nothing: the window manager has not put it in its place yet
        transparent,   // nothing: that is what is wanted
        unpainted,     // what a former painter has left
        painting,      // what was shown before, while what is wanted is being painted
        shown,         // what is wanted, or was at the last push
    };

    // When the difference between what is wanted and what is shown is sent next.
    enum class NextPush { none, posted, whenPainted };

    // Whether the server can hold the pictures of an overlay of a size.
    struct Room {
        enum class State { unknown, enough, tooLittle };

        int width = 0; // pixels
        int height = 0;
        State state = State::unknown;
        std::optional<Lifetime> replies = {}; // of the latest requests
    };

    std::unique_ptr<OverlaySurface> makeSurface();
    std::unique_ptr<Placement> makePlacement();
    bool isPlacementStale() const;
    void renewPlacement();
    void setOrder(const Order &order);
    void requestPush();
    void followWindows();
    void push();
    bool isReady(const Order &order) const;
    bool hasRoom(const drawing::PixelRect &area);
    void askForRoom(const drawing::PixelRect &area);
    void noteTooLittleRoom();
    void goOut();
    void hide(Stage stage, const drawing::PixelRect &area, const Order &order);
    void paint(const drawing::PlacedLayers &appearance, const Order &order);
    void show(const drawing::PixelRect &area, const Order &order);
    void place(const drawing::PixelRect &area, const Order &order);
    OverlaySurface::Cutting cutting() const;
    void preparePainter(bool withBackdrop);
    std::unique_ptr<Painter> makePainter(bool withBackdrop);
    std::unique_ptr<Painter> makeScenePainter(std::unique_ptr<BackdropRenderer> renderer,
                                              SceneBelow::Windows windows);
    void removePainter();
    void replacePainter();
    drawing::PlacedLayers appearance() const;
    void damageWhatComesOut(const Order &order);

    OverlaySurroundings &surroundings_;
    Connection &connection_;
    Handle redirection_;

    Wanted wanted_;
    int level_ = 0;
    NextPush nextPush_ = NextPush::none;

    ManagerHabits habits_; // that the surface and the placement are made for
    std::unique_ptr<OverlaySurface> surface_;
    std::unique_ptr<OverlaySurface> retired_; // shows until its successor does
    Stage stage_ = Stage::out;
    Room room_;
    Order placed_; // what the server was last asked for
    std::unique_ptr<Placement> placement_;
    std::unique_ptr<Painter> painter_;
    bool paintsBackdrop_ = false; // the painter was made for a tree that shows a backdrop
    Handle nextAttempt_;          // at an order that does not hold yet
    Handle compositorChanges_;
    Handle choiceChanges_;
    Handle mirrorChanges_;
    Handle screenChanges_;
    Handle rendererImprovements_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
