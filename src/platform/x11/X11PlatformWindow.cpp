#include "platform/x11/X11PlatformWindow.h"

#include "platform/MainLoop.h"
#include "platform/Screens.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/painting/BackdropRenderers.h"
#include "platform/x11/painting/CompositorWatch.h"
#include "platform/x11/painting/FlatRenderer.h"
#include "platform/x11/painting/LinesPainter.h"
#include "platform/x11/painting/Redirection.h"
#include "platform/x11/painting/ScenePainter.h"
#include "platform/x11/painting/TranslucentPainter.h"
#include "platform/x11/placement/BelowPlacement.h"
#include "platform/x11/placement/CutOutPlacement.h"
#include "platform/x11/placement/ManagedPlacement.h"
#include "platform/x11/placement/PlacementChoice.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/ServerResource.h"
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace lumo::x11 {

namespace {

// What the protocol can say of a window's size.
constexpr int largestExtent = 32767;

// Seconds after which an order is enforced again that does not hold by then.
constexpr double attemptInterval = 1.0 / 60;

} // namespace

X11PlatformWindow::X11PlatformWindow(OverlaySurroundings &surroundings, const Rect &frame)
    : surroundings_(surroundings)
    , connection_(surroundings.connection)
    , redirection_(surroundings.redirection.hold())
    , wanted_{frame, 1, {}, {}}
    , habits_(surroundings.placementChoice.habits())
    , surface_(makeSurface())
    , placement_(makePlacement())
    , compositorChanges_(surroundings.compositor.onChange([this] { replacePainter(); }))
    , choiceChanges_(surroundings.placementChoice.onChange([this] { requestPush(); }))
    , mirrorChanges_(surroundings.mirror.onChange([this](const auto &) { followWindows(); }))
    , screenChanges_(surroundings.screens.onScreenParametersDidChange([this] { requestPush(); }))
    , rendererImprovements_(surroundings.backdropRenderers.onImprovement([this] {
        if (paintsBackdrop_) {
            replacePainter();
        }
    })) {
}

std::unique_ptr<OverlaySurface> X11PlatformWindow::makeSurface() {
    const bool isManaged = habits_.placement == PlacementKind::managed;
    auto surface = std::make_unique<OverlaySurface>(
        connection_, surroundings_.drawing.formats,
        isManaged ? OverlaySurface::Control::managed : OverlaySurface::Control::overrideRedirect,
        appearance().area, [this] { requestPush(); });
    if (isManaged) {
        surroundings_.mirror.claimFrameOf(surface->id());
    }
    return surface;
}

std::unique_ptr<Placement> X11PlatformWindow::makePlacement() {
    const auto &mirror = surroundings_.mirror;
    const auto &mainLoop = surroundings_.mainLoop;
    switch (habits_.placement) {
    case PlacementKind::managed:
        return std::make_unique<ManagedPlacement>(connection_, mirror, mainLoop, surface_->id());
    case PlacementKind::cutOuts:
        return std::make_unique<CutOutPlacement>(connection_, mirror, mainLoop, surroundings_.log,
                                                 habits_.focusRaises, *surface_);
    case PlacementKind::below:
        break;
    }
    return std::make_unique<BelowPlacement>(connection_, mirror, mainLoop, surface_->id());
}

bool X11PlatformWindow::isPlacementStale() const {
    return habits_ != surroundings_.placementChoice.habits();
}

// Whether a window is managed can't be changed while one manager runs, so another surface takes
// over.
void X11PlatformWindow::renewPlacement() {
    if (!isPlacementStale()) {
        return;
    }
    habits_ = surroundings_.placementChoice.habits();
    placement_.reset();
    const bool needsManager = habits_.placement == PlacementKind::managed;
    if (needsManager != (surface_->control() == OverlaySurface::Control::managed)) {
        painter_.reset();
        retired_ = std::move(surface_);
        surface_ = makeSurface();
        stage_ = Stage::out;
    }
    placement_ = makePlacement();
}

void X11PlatformWindow::setFrame(const Rect &frame) {
    if (frame != wanted_.frame) {
        wanted_.frame = frame;
        requestPush();
    }
}

void X11PlatformWindow::setLevel(int level) {
    level_ = level;
    if (wanted_.order.kind == Order::Kind::front) {
        orderFront();
    }
}

void X11PlatformWindow::setAlphaValue(double alpha) {
    alpha = std::clamp(alpha, 0.0, 1.0);
    if (alpha != wanted_.alpha) {
        wanted_.alpha = alpha;
        requestPush();
    }
}

void X11PlatformWindow::orderFront() {
    setOrder({Order::Kind::front, XCB_NONE, level_});
}

void X11PlatformWindow::orderBelow(std::uint32_t windowNumber) {
    setOrder({Order::Kind::below, windowNumber, 0});
}

void X11PlatformWindow::orderOut() {
    setOrder({});
}

void X11PlatformWindow::setOrder(const Order &order) {
    if (order != wanted_.order || !placement_->holds(order)) {
        wanted_.order = order;
        requestPush();
    }
}

std::optional<double> X11PlatformWindow::backingScaleFactor() const {
    for (const auto &screen : surroundings_.screens.screens()) {
        if (!screen.frame.intersection(wanted_.frame).isEmpty()) {
            return screen.backingScaleFactor;
        }
    }
    return std::nullopt;
}

void X11PlatformWindow::commit(const LayerTree &tree) {
    if (tree != wanted_.tree) {
        wanted_.tree = tree;
        requestPush();
    }
}

void X11PlatformWindow::requestPush() {
    if (nextPush_ != NextPush::posted) {
        nextPush_ = NextPush::posted;
        surroundings_.mainLoop.post(lifetime_.guard([this] { push(); }));
    }
}

void X11PlatformWindow::followWindows() {
    if (!surface_->isMapped() || wanted_.order.kind == Order::Kind::out || isPlacementStale()) {
        return;
    }
    const auto *described = surroundings_.mirror.find(surface_->id());
    if (described != nullptr && described->opacity < 1) {
        surroundings_.log.print("[Lumo] Another program makes overlays translucent, so that what "
                                "they cover can be seen (_NET_WM_WINDOW_OPACITY)");
    }
    placement_->follow(placed_);
    if (!placement_->holds(wanted_.order) ||
        (stage_ == Stage::awaitingPlace && placement_->mayBeSeen(wanted_.order))) {
        requestPush();
    }
}

void X11PlatformWindow::push() {
    nextPush_ = NextPush::none;
    renewPlacement();
    const auto order = wanted_.order;
    const auto wanted = appearance();
    if (order.kind == Order::Kind::out || wanted.alpha <= 0) {
        retired_.reset();
    }
    if (order.kind == Order::Kind::out) {
        goOut();
        return;
    }
    if (!isReady(order) || !hasRoom(wanted.area)) {
        return;
    }
    preparePainter(showsBackdrop(wanted.tree));
    if (!placement_->mayBeSeen(order)) {
        hide(Stage::awaitingPlace, wanted.area, order);
    } else if (wanted.alpha <= 0) {
        hide(Stage::transparent, wanted.area, order);
    } else if (stage_ == Stage::painting) {
        nextPush_ = NextPush::whenPainted;
    } else {
        paint(wanted, order);
    }
}

bool X11PlatformWindow::isReady(const Order &order) const {
    switch (surface_->state()) {
    case OverlaySurface::State::unconfirmed:
        return false; // the confirmation requests a push
    case OverlaySurface::State::unusable:
        surroundings_.log.print("[Lumo] The X server cannot let clicks through an overlay (XFixes "
                                "2 and Shape 1.1); none is shown");
        return false;
    case OverlaySurface::State::unmapped:
        // Its place among the windows would be a random one.
        return placement_->isPossible(order);
    case OverlaySurface::State::mapped:
        break;
    }
    return true;
}

bool X11PlatformWindow::hasRoom(const drawing::PixelRect &area) {
    if (area.width != room_.width || area.height != room_.height) {
        askForRoom(area);
    }
    if (room_.state == Room::State::tooLittle) {
        retired_.reset();
        goOut();
    }
    return room_.state == Room::State::enough;
}

// As many pictures as an overlay may need at once, which are not drawn to: the server has the
// memory for their pixels or says that it has not.
void X11PlatformWindow::askForRoom(const drawing::PixelRect &area) {
    constexpr std::size_t pictures = 3; // the scene, the canvas and the grain
    room_.width = area.width;
    room_.height = area.height;
    room_.state = Room::State::unknown;
    room_.replies.emplace();
    std::array<OwnedPixmap, pictures> pixmaps;
    for (auto &pixmap : pixmaps) {
        pixmap = OwnedPixmap(connection_);
        const bool isLast = &pixmap == &pixmaps.back();
        connection_.whenHandled(xcb_create_pixmap_checked(connection_, surface_->depth(),
                                                          pixmap.id(), surface_->id(),
                                                          static_cast<std::uint16_t>(area.width),
                                                          static_cast<std::uint16_t>(area.height)),
                                room_.replies->guard([this, isLast](bool succeeded) {
                                    if (!succeeded) {
                                        noteTooLittleRoom();
                                    } else if (isLast && room_.state == Room::State::unknown) {
                                        room_.state = Room::State::enough;
                                    }
                                    if (isLast) {
                                        requestPush();
                                    }
                                }));
    }
}

void X11PlatformWindow::noteTooLittleRoom() {
    if (std::exchange(room_.state, Room::State::tooLittle) != Room::State::tooLittle) {
        surroundings_.log.print("[Lumo] The X server has no memory for an overlay of " +
                                std::to_string(room_.width) + " x " + std::to_string(room_.height) +
                                " pixels; none is shown");
    }
}

void X11PlatformWindow::goOut() {
    stage_ = Stage::out;
    if (painter_) {
        painter_->suspend();
    }
    surface_->unmap();
}

void X11PlatformWindow::hide(Stage stage, const drawing::PixelRect &area, const Order &order) {
    stage_ = stage;
    painter_->suspend();
    surface_->setCutting(cutting());
    surface_->setCutAway(true);
    place(area, order);
    surface_->map();
}

void X11PlatformWindow::paint(const drawing::PlacedLayers &appearance, const Order &order) {
    stage_ = Stage::painting;
    painter_->paint(appearance, [this, area = appearance.area, order] {
        show(area, order);
        if (nextPush_ == NextPush::whenPainted) {
            requestPush();
        }
    });
}

void X11PlatformWindow::show(const drawing::PixelRect &area, const Order &order) {
    stage_ = Stage::shown;
    surface_->setCutting(cutting());
    place(area, order);
    painter_->present();
    surface_->setCutAway(false);
    surface_->map();
    retired_.reset();
}

void X11PlatformWindow::place(const drawing::PixelRect &area, const Order &order) {
    surface_->move(area);
    placed_ = order;
    nextAttempt_.reset();
    if (!placement_->holds(order)) {
        if (placement_->enforce(order) == Placement::Outcome::abandoned) {
            surroundings_.placementChoice.abandon(habits_.placement);
        }
        damageWhatComesOut(order);
        nextAttempt_ = surroundings_.mainLoop.after(
            std::max(attemptInterval, placement_->remainingPause()), [this] {
                if (!placement_->holds(wanted_.order)) {
                    requestPush();
                }
            });
    }
    if (habits_.placement != PlacementKind::cutOuts) {
        surface_->setShape({});
    }
}

OverlaySurface::Cutting X11PlatformWindow::cutting() const {
    return surroundings_.compositor.isCompositing() && surface_->depth() == 32
               ? OverlaySurface::Cutting::pixels
               : OverlaySurface::Cutting::shape;
}

void X11PlatformWindow::preparePainter(bool withBackdrop) {
    if (painter_ && withBackdrop != paintsBackdrop_) {
        removePainter();
    }
    if (!painter_) {
        painter_ = makePainter(withBackdrop);
        paintsBackdrop_ = withBackdrop;
    }
}

void X11PlatformWindow::removePainter() {
    painter_.reset();
    if (stage_ == Stage::painting || stage_ == Stage::shown) {
        stage_ = Stage::unpainted;
    }
}

void X11PlatformWindow::replacePainter() {
    if (!surroundings_.compositor.isCompositing()) {
        surface_->setCutting(OverlaySurface::Cutting::shape); // transparent pixels are black now
    }
    removePainter();
    requestPush();
}

std::unique_ptr<Painter> X11PlatformWindow::makePainter(bool withBackdrop) {
    const auto &drawing = surroundings_.drawing;
    const auto &extensions = connection_.extensions();
    if (withBackdrop) {
        if (auto renderer = surroundings_.backdropRenderers.make()) {
            return makeScenePainter(std::move(renderer), SceneBelow::Windows::blended);
        }
    }
    if (cutting() == OverlaySurface::Cutting::pixels) {
        return std::make_unique<TranslucentPainter>(drawing, *surface_);
    }
    if (extensions.composite && extensions.damage &&
        drawing.formats.opaque(surface_->visual()) != XCB_NONE) {
        return makeScenePainter(std::make_unique<FlatRenderer>(drawing),
                                SceneBelow::Windows::opaque);
    }
    return std::make_unique<LinesPainter>(connection_, *surface_);
}

std::unique_ptr<Painter>
X11PlatformWindow::makeScenePainter(std::unique_ptr<BackdropRenderer> renderer,
                                    SceneBelow::Windows windows) {
    const auto &drawing = surroundings_.drawing;
    auto scene = std::make_unique<SceneBelow>(
        connection_, surroundings_.surfaces, surroundings_.wallpaper, windows,
        [this] { return placement_->lowerWindows(wanted_.order); });
    const auto format = surface_->depth() == 32 ? drawing.formats.translucent()
                                                : drawing.formats.opaque(surface_->visual());
    // The painter is in the midst of its work when it fails.
    auto failed = [this, method = surroundings_.backdropRenderers.methodInUse()] {
        surroundings_.mainLoop.post(lifetime_.guard([this, method] {
            surroundings_.backdropRenderers.stepDownFrom(method);
            replacePainter();
        }));
    };
    return std::make_unique<ScenePainter>(drawing.connection, surroundings_.mainLoop,
                                          std::move(scene), *surface_, format, std::move(renderer),
                                          std::move(failed));
}

drawing::PlacedLayers X11PlatformWindow::appearance() const {
    const auto space = surroundings_.pointSpace();
    auto area = space.pixelsOfFrame(wanted_.frame);
    area.width = std::clamp(area.width, 1, largestExtent);
    area.height = std::clamp(area.height, 1, largestExtent);
    return {area, wanted_.frame, space, wanted_.tree,
            wanted_.alpha * std::clamp(wanted_.tree.viewAlpha, 0.0, 1.0)};
}

// Some compositing managers, told of a new order, draw anew only what is seen of the restacked
// window itself. What it uncovers by going down would stay as it was under the overlay.
void X11PlatformWindow::damageWhatComesOut(const Order &order) {
    const auto &extensions = connection_.extensions();
    if (!surface_->isMapped() || !surroundings_.compositor.isCompositing() || !extensions.damage ||
        !extensions.xfixes) {
        return;
    }
    const auto staysBeneath = placement_->lowerWindows(order);
    for (const auto window : surroundings_.mirror.stacking()) {
        if (window == surface_->id()) {
            break;
        }
        const auto *found = surroundings_.mirror.find(window);
        if (found->canBeSeen() && std::ranges::find(staysBeneath, window) == staysBeneath.end()) {
            const auto whole = toProtocol({0, 0, found->geometry.width, found->geometry.height});
            const OwnedRegion region(connection_);
            xcb_xfixes_create_region(connection_, region.id(), 1, &whole);
            xcb_damage_add(connection_, window, region.id());
        }
    }
}

} // namespace lumo::x11
