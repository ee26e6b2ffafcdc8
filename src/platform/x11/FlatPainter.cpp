#include "platform/x11/FlatPainter.h"

#include "platform/x11/Connection.h"

#include <utility>

namespace lumo::x11 {

namespace {

constexpr double refreshInterval = 1.0 / 60;

} // namespace

FlatPainter::FlatPainter(const DrawingTools &tools, MainLoop &mainLoop, WindowSurfaces &surfaces,
                         Wallpaper &wallpaper, SceneBelow::LowerWindows lowerWindows,
                         xcb_window_t window, std::uint8_t depth, xcb_render_pictformat_t format)
    : tools_(tools)
    , connection_(tools.connection)
    , mainLoop_(mainLoop)
    , scene_(tools.connection, surfaces, wallpaper, std::move(lowerWindows))
    , window_(window)
    , depth_(depth)
    , format_(format)
    , sceneChanges_(scene_.onStale([this] { scheduleRedraw(); })) {
}

void FlatPainter::makeCanvas(const PixelRect &area) {
    const auto width = static_cast<std::uint16_t>(area.width);
    const auto height = static_cast<std::uint16_t>(area.height);
    canvas_ = OwnedPixmap(connection_);
    xcb_create_pixmap(connection_, depth_, canvas_.id(), window_, width, height);
    canvasPicture_ = OwnedPicture(connection_);
    xcb_render_create_picture(connection_, canvasPicture_.id(), canvas_.id(), format_, 0, nullptr);
    context_ = OwnedGraphicsContext(connection_);
    const std::uint32_t graphicsExposures = 0;
    xcb_create_gc(connection_, context_.id(), canvas_.id(), XCB_GC_GRAPHICS_EXPOSURES,
                  &graphicsExposures);
    // Servers show later drawing into it as well, since they keep the pixmap and not a copy.
    const std::uint32_t background = canvas_.id();
    xcb_change_window_attributes(connection_, window_, XCB_CW_BACK_PIXMAP, &background);
}

void FlatPainter::paint(const Appearance &appearance) {
    isSuspended_ = false;
    paintedAt_ = mainLoop_.now();
    if (painted_ != appearance) {
        if (!painted_ || painted_->area.width != appearance.area.width ||
            painted_->area.height != appearance.area.height) {
            makeCanvas(appearance.area);
        }
        layers_ = drawLayers(tools_, appearance);
        scene_.setArea(appearance.area);
        scene_.invalidate();
        painted_ = appearance;
    }
    hasChanges_ = scene_.update();
    if (hasChanges_) {
        scene_.draw(canvasPicture_.id());
        xcb_render_composite(connection_, XCB_RENDER_PICT_OP_OVER, layers_.picture.id(), XCB_NONE,
                             canvasPicture_.id(), 0, 0, 0, 0, 0, 0,
                             static_cast<std::uint16_t>(appearance.area.width),
                             static_cast<std::uint16_t>(appearance.area.height));
    }
}

void FlatPainter::present() {
    if (!std::exchange(hasChanges_, false)) {
        return;
    }
    const auto &area = painted_->area;
    xcb_xfixes_set_gc_clip_region(connection_, context_.id(), scene_.changes(),
                                  static_cast<std::int16_t>(-area.x),
                                  static_cast<std::int16_t>(-area.y));
    xcb_copy_area(connection_, canvas_.id(), window_, context_.id(), 0, 0, 0, 0,
                  static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height));
    scene_.settle();
}

void FlatPainter::suspend() {
    isSuspended_ = true;
    nextRedraw_.reset();
}

void FlatPainter::scheduleRedraw() {
    if (!isSuspended_ && !nextRedraw_) {
        const double wait = paintedAt_ + refreshInterval - mainLoop_.now();
        nextRedraw_ = mainLoop_.after(std::max(wait, 0.0), [this] { redraw(); });
    }
}

void FlatPainter::redraw() {
    nextRedraw_.reset();
    paint(Appearance(*painted_));
    present();
}

} // namespace lumo::x11
