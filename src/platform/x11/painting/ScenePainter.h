#pragma once

#include "drawing/Region.h"
#include "platform/MainLoop.h"
#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/painting/Painter.h"
#include "platform/x11/painting/SceneBelow.h"

#include <xcb/xcb.h>

#include <memory>
#include <optional>

namespace lumo::x11 {

class OverlaySurface;

// Shows a picture of what lies beneath with the layers drawn over it by a renderer, and draws what
// changes beneath anew, at most once per refresh. Opaque, so that a compositing manager shows the
// same.
class ScenePainter final : public Painter {
  public:
    // The format is that of the window's pixels. Calls failed when the renderer can't draw any
    // more; nothing is painted from then on. The painter must outlive that call.
    ScenePainter(Connection &connection, MainLoop &mainLoop, std::unique_ptr<SceneBelow> scene,
                 OverlaySurface &window, xcb_render_pictformat_t format,
                 std::unique_ptr<BackdropRenderer> renderer, std::function<void()> failed);

    void paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) override;
    void present() override;
    void suspend() override;

  private:
    enum class State {
        suspended,         // until the next paint()
        resting,           // nothing is being rendered
        rendering,         // from the scene as it is
        renderingOutdated, // the scene has changed since that began
        failed,            // for good
    };

    struct Buffer {
        std::shared_ptr<const OwnedPixmap> pixmap;
        OwnedPicture picture;
    };

    Buffer makeBuffer(const drawing::PixelRect &area);
    void makeTarget(const drawing::PixelRect &area);
    void adopt(const drawing::PlacedLayers &appearance);
    void draw();
    void drawn(bool succeeded);
    void drawScene();
    void clipToDamage();
    bool isRendering() const {
        return state_ == State::rendering || state_ == State::renderingOutdated;
    }
    void sceneChanged();
    void scheduleRedraw();

    Connection &connection_;
    MainLoop &mainLoop_;
    std::unique_ptr<SceneBelow> scene_;
    OverlaySurface &window_;
    xcb_render_pictformat_t format_;
    std::unique_ptr<BackdropRenderer> renderer_;
    std::function<void()> failed_;

    std::optional<drawing::PlacedLayers> adopted_;
    Buffer canvas_; // what the window shows once that has been rendered
    Buffer apart_;  // the scene, if the renderer needs it apart
    RenderTarget target_;
    bool isCanvasNew_ = true; // and not yet the window's contents

    drawing::Region damage_; // to be rendered, or being rendered; from the window's top left
    OwnedRegion fresh_;      // rendered, or about to be, but not presented; on the root window
    OwnedRegion scratch_;
    bool hasFresh_ = false; // there may be some of it
    State state_ = State::suspended;
    double drawnAt_ = 0; // seconds
    std::function<void()> painted_;
    Handle sceneChanges_;
    Handle nextRedraw_;
};

} // namespace lumo::x11
