#include "platform/x11/painting/ScenePainter.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr double refreshInterval = 1.0 / 60;

drawing::PixelRect wholeOf(const RenderTarget &target) {
    return {0, 0, target.width, target.height};
}

} // namespace

ScenePainter::ScenePainter(Connection &connection, MainLoop &mainLoop,
                           std::unique_ptr<SceneBelow> scene, const Canvas &canvas,
                           std::unique_ptr<BackdropRenderer> renderer, std::function<void()> failed)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , scene_(std::move(scene))
    , window_(canvas)
    , renderer_(std::move(renderer))
    , failed_(std::move(failed))
    , fresh_(makeEmptyRegion(connection_))
    , scratch_(makeEmptyRegion(connection_))
    , sceneChanges_(scene_->onStale([this] { scheduleRedraw(); })) {
}

ScenePainter::Buffer ScenePainter::makeBuffer(const drawing::PixelRect &area) {
    Buffer buffer{OwnedPixmap(connection_), OwnedPicture(connection_)};
    xcb_create_pixmap(connection_, window_.depth, buffer.pixmap.id(), window_.window,
                      static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height));
    xcb_render_create_picture(connection_, buffer.picture.id(), buffer.pixmap.id(), window_.format,
                              0, nullptr);
    return buffer;
}

void ScenePainter::makeTarget(const drawing::PixelRect &area) {
    canvas_ = makeBuffer(area);
    isBackground_ = false;
    if (renderer_->needsSceneApart()) {
        apart_ = makeBuffer(area);
    }
    const auto &scene = renderer_->needsSceneApart() ? apart_ : canvas_;
    target_ = {area.width,        area.height,        window_.depth,       window_.format,
               scene.pixmap.id(), scene.picture.id(), canvas_.pixmap.id(), canvas_.picture.id()};
    context_ = OwnedGraphicsContext(connection_);
    const std::uint32_t graphicsExposures = 0;
    xcb_create_gc(connection_, context_.id(), canvas_.pixmap.id(), XCB_GC_GRAPHICS_EXPOSURES,
                  &graphicsExposures);
    scene_->invalidate();
}

void ScenePainter::adopt(const drawing::PlacedLayers &appearance) {
    const auto &area = appearance.area;
    scene_->setArea(area);
    if (area.width != target_.width || area.height != target_.height) {
        makeTarget(area);
    } else if (!renderer_->needsSceneApart()) {
        // The layers have been drawn over it.
        scene_->invalidate();
    }
    adopted_ = appearance;
    isDrawing_ = false;
    renderer_->prepare(appearance, target_);
    parts_ = wholeOf(target_);
}

void ScenePainter::paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) {
    if (hasFailed_) {
        return;
    }
    isSuspended_ = false;
    painted_ = std::move(painted);
    if (adopted_ != appearance) {
        adopt(appearance);
    }
    draw();
}

void ScenePainter::drawScene() {
    if (!scene_->update()) {
        return;
    }
    scene_->draw(target_.scene);
    if (!renderer_->needsSceneApart()) {
        xcb_xfixes_union_region(connection_, fresh_.id(), scene_->changes(), fresh_.id());
    }
    const auto &area = adopted_->area;
    const auto changed = scene_->knownChanges().translated(-area.x, -area.y);
    parts_ |= changed.grown(renderer_->reach()) & wholeOf(target_);
    // A renderer has some work with each rectangle.
    parts_ = drawing::Region(parts_.boxes());
    scene_->settle();
}

// What a renderer that needs the scene apart is to draw; any other has it from the scene.
void ScenePainter::clipToParts() {
    const auto &area = adopted_->area;
    const auto rectangles = toProtocol(parts_.translated(area.x, area.y));
    xcb_xfixes_set_region(connection_, scratch_.id(), static_cast<std::uint32_t>(rectangles.size()),
                          rectangles.data());
    xcb_xfixes_union_region(connection_, fresh_.id(), scratch_.id(), fresh_.id());
    xcb_xfixes_set_picture_clip_region(connection_, target_.canvas, scratch_.id(),
                                       static_cast<std::int16_t>(-area.x),
                                       static_cast<std::int16_t>(-area.y));
}

void ScenePainter::draw() {
    nextRedraw_.reset();
    drawnAt_ = mainLoop_.now();
    drawScene();
    if (parts_.isEmpty()) {
        drawn(true);
        return;
    }
    if (renderer_->needsSceneApart()) {
        clipToParts();
    }
    isDrawing_ = true;
    isStaleMeanwhile_ = false;
    hasFresh_ = true;
    renderer_->render(parts_.boxes(), [this](bool succeeded) { drawn(succeeded); });
}

void ScenePainter::drawn(bool succeeded) {
    isDrawing_ = false;
    if (!succeeded) {
        hasFailed_ = true;
        failed_();
        return;
    }
    parts_ = {};
    if (!std::exchange(isBackground_, true)) {
        // Servers show later drawing into it as well, since they keep the pixmap and not a copy.
        const std::uint32_t background = canvas_.pixmap.id();
        xcb_change_window_attributes(connection_, window_.window, XCB_CW_BACK_PIXMAP, &background);
    }
    if (painted_) {
        std::exchange(painted_, nullptr)();
    } else {
        present();
    }
    if (std::exchange(isStaleMeanwhile_, false)) {
        scheduleRedraw();
    }
}

void ScenePainter::present() {
    if (isDrawing_ || !std::exchange(hasFresh_, false)) {
        return;
    }
    const auto &area = adopted_->area;
    xcb_xfixes_set_gc_clip_region(connection_, context_.id(), fresh_.id(),
                                  static_cast<std::int16_t>(-area.x),
                                  static_cast<std::int16_t>(-area.y));
    xcb_copy_area(connection_, canvas_.pixmap.id(), window_.window, context_.id(), 0, 0, 0, 0,
                  static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height));
    xcb_xfixes_set_region(connection_, fresh_.id(), 0, nullptr);
}

void ScenePainter::suspend() {
    isSuspended_ = true;
    nextRedraw_.reset();
    painted_ = nullptr;
    if (std::exchange(isDrawing_, false)) {
        renderer_->cancel();
    }
}

void ScenePainter::scheduleRedraw() {
    if (isDrawing_) {
        isStaleMeanwhile_ = true;
    } else if (!isSuspended_ && !hasFailed_ && !nextRedraw_) {
        const double wait = drawnAt_ + refreshInterval - mainLoop_.now();
        nextRedraw_ = mainLoop_.after(std::max(wait, 0.0), [this] { draw(); });
    }
}

} // namespace lumo::x11
