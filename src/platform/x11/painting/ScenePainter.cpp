#include "platform/x11/painting/ScenePainter.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/OverlaySurface.h"
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
                           std::unique_ptr<SceneBelow> scene, OverlaySurface &window,
                           xcb_render_pictformat_t format,
                           std::unique_ptr<BackdropRenderer> renderer, std::function<void()> failed)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , scene_(std::move(scene))
    , window_(window)
    , format_(format)
    , renderer_(std::move(renderer))
    , failed_(std::move(failed))
    , fresh_(makeEmptyRegion(connection_))
    , scratch_(makeEmptyRegion(connection_))
    , sceneChanges_(scene_->onStale([this] { sceneChanged(); })) {
}

ScenePainter::Buffer ScenePainter::makeBuffer(const drawing::PixelRect &area) {
    Buffer buffer{std::make_shared<OwnedPixmap>(connection_), OwnedPicture(connection_)};
    xcb_create_pixmap(connection_, window_.depth(), buffer.pixmap->id(), window_.id(),
                      static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height));
    xcb_render_create_picture(connection_, buffer.picture.id(), buffer.pixmap->id(), format_, 0,
                              nullptr);
    return buffer;
}

void ScenePainter::makeTarget(const drawing::PixelRect &area) {
    canvas_ = makeBuffer(area);
    isCanvasNew_ = true;
    if (renderer_->needsSceneApart()) {
        apart_ = makeBuffer(area);
    }
    const auto &scene = renderer_->needsSceneApart() ? apart_ : canvas_;
    target_ = {area.width,         area.height,        window_.depth(),      format_,
               scene.pixmap->id(), scene.picture.id(), canvas_.pixmap->id(), canvas_.picture.id()};
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
    state_ = State::resting;
    renderer_->prepare(appearance, target_);
    damage_ = wholeOf(target_);
}

void ScenePainter::paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) {
    if (state_ == State::failed) {
        return;
    }
    if (state_ == State::suspended) {
        state_ = State::resting;
    }
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
    damage_ |= changed.grown(renderer_->reach()) & wholeOf(target_);
    // A renderer has some work with each rectangle.
    damage_ = drawing::Region(damage_.boxes());
    scene_->settle();
}

// What a renderer that needs the scene apart is to draw; any other has it from the scene.
void ScenePainter::clipToDamage() {
    const auto &area = adopted_->area;
    const auto rectangles = toProtocol(damage_.translated(area.x, area.y));
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
    if (damage_.isEmpty()) {
        drawn(true);
        return;
    }
    if (renderer_->needsSceneApart()) {
        clipToDamage();
    }
    state_ = State::rendering;
    hasFresh_ = true;
    renderer_->render(damage_.boxes(), [this](bool succeeded) { drawn(succeeded); });
}

void ScenePainter::drawn(bool succeeded) {
    const bool isOutdated = state_ == State::renderingOutdated;
    state_ = succeeded ? State::resting : State::failed;
    if (!succeeded) {
        failed_();
        return;
    }
    damage_ = {};
    if (std::exchange(isCanvasNew_, false)) {
        window_.setContents(canvas_.pixmap);
    }
    if (painted_) {
        std::exchange(painted_, nullptr)();
    } else {
        present();
    }
    if (isOutdated) {
        sceneChanged();
    }
}

void ScenePainter::present() {
    if (isRendering() || !std::exchange(hasFresh_, false)) {
        return;
    }
    const auto &area = adopted_->area;
    xcb_xfixes_translate_region(connection_, fresh_.id(), static_cast<std::int16_t>(-area.x),
                                static_cast<std::int16_t>(-area.y));
    window_.present(fresh_.id());
    xcb_xfixes_set_region(connection_, fresh_.id(), 0, nullptr);
}

void ScenePainter::suspend() {
    nextRedraw_.reset();
    painted_ = nullptr;
    if (isRendering()) {
        renderer_->cancel();
    }
    if (state_ != State::failed) {
        state_ = State::suspended;
    }
}

void ScenePainter::sceneChanged() {
    if (isRendering()) {
        state_ = State::renderingOutdated;
    } else if (state_ == State::resting && !nextRedraw_) {
        scheduleRedraw();
    }
}

void ScenePainter::scheduleRedraw() {
    const double wait = drawnAt_ + refreshInterval - mainLoop_.now();
    nextRedraw_ = mainLoop_.after(std::max(wait, 0.0), [this] { draw(); });
}

} // namespace lumo::x11
