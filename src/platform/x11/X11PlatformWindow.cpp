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
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

// What the protocol can say of a window's size.
constexpr int largestExtent = 32767;

} // namespace

X11PlatformWindow::X11PlatformWindow(OverlaySurroundings &surroundings, const Rect &frame)
    : surroundings_(surroundings)
    , connection_(surroundings.connection)
    , redirection_(surroundings.redirection.hold())
    , wanted_{frame, 1, {}, {}}
    , window_(makeWindow())
    , placement_(makePlacement())
    , compositorChanges_(surroundings.compositor.onChange([this] { dropPainter(); }))
    , choiceChanges_(surroundings.placementChoice.onChange([this] {
        isPlacementStale_ = true; // it may be in the midst of its work
        requestPush();
    }))
    , mirrorChanges_(surroundings.mirror.onChange([this](const auto &) { followWindows(); }))
    , screenChanges_(surroundings.screens.onScreenParametersDidChange([this] { requestPush(); }))
    , rendererImprovements_(surroundings.backdropRenderers.onImprovement([this] {
        if (paintsBackdrop_) {
            dropPainter();
        }
    })) {
    mayBeShown_ = window_->letsClicksThrough();
    if (!mayBeShown_) {
        surroundings_.log.print("[Lumo] The X server cannot let clicks through an overlay (XFixes "
                                "2 and Shape 1.1); none is shown");
    }
}

std::unique_ptr<OverlaySurface> X11PlatformWindow::makeWindow() const {
    const bool isManaged =
        surroundings_.placementChoice.habits().placement == PlacementKind::managed;
    auto window = std::make_unique<OverlaySurface>(
        connection_, surroundings_.drawing.formats,
        isManaged ? OverlaySurface::Care::manager : OverlaySurface::Care::none, appearance().area);
    if (isManaged) {
        surroundings_.mirror.claimFrameOf(window->id());
    }
    return window;
}

std::unique_ptr<Placement> X11PlatformWindow::makePlacement() {
    const auto &habits = surroundings_.placementChoice.habits();
    const auto &mirror = surroundings_.mirror;
    const auto &mainLoop = surroundings_.mainLoop;
    switch (habits.placement) {
    case PlacementKind::managed:
        return std::make_unique<ManagedPlacement>(connection_, mirror, mainLoop, window_->id());
    case PlacementKind::cutOuts:
        return std::make_unique<CutOutPlacement>(connection_, mirror, mainLoop, surroundings_.log,
                                                 habits.focusRaises, *window_);
    case PlacementKind::below:
        break;
    }
    return std::make_unique<BelowPlacement>(connection_, mirror, mainLoop, window_->id());
}

// Whether a manager handles a window can't be changed while one does, so another window takes over.
void X11PlatformWindow::usePlacement() {
    if (!std::exchange(isPlacementStale_, false)) {
        return;
    }
    placement_.reset();
    const bool needsManager =
        surroundings_.placementChoice.habits().placement == PlacementKind::managed;
    if (needsManager != (window_->care() == OverlaySurface::Care::manager)) {
        painter_.reset();
        retired_ = std::move(window_);
        window_ = makeWindow();
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
    if (!isPushRequested_ && mayBeShown_) {
        isPushRequested_ = true;
        surroundings_.mainLoop.post(lifetime_.guard([this] { push(); }));
    }
}

void X11PlatformWindow::followWindows() {
    if (!window_->isMapped() || wanted_.order.kind == Order::Kind::out || isPlacementStale_) {
        return;
    }
    placement_->follow(placed_);
    if (!placement_->holds(wanted_.order) ||
        (isAwaitingPlace_ && placement_->mayBeSeen(wanted_.order))) {
        requestPush();
    }
}

void X11PlatformWindow::push() {
    isPushRequested_ = false;
    usePlacement();
    const auto order = wanted_.order;
    const auto wanted = appearance();
    if (order.kind == Order::Kind::out) {
        isPainting_ = false;
        if (painter_) {
            painter_->suspend();
        }
        window_->setMapped(false);
        retired_.reset();
        return;
    }
    // Its place among the windows would be a random one.
    if (!window_->isMapped() && !placement_->isPossible(order)) {
        return;
    }
    preparePainter(showsBackdrop(wanted.tree));
    isAwaitingPlace_ = !placement_->mayBeSeen(order);
    if (wanted.alpha <= 0) {
        retired_.reset();
    }
    if (wanted.alpha <= 0 || isAwaitingPlace_) {
        isPainting_ = false;
        hide(wanted.area, order);
    } else if (isPainting_) {
        isPushAwaited_ = true;
    } else {
        isPainting_ = true;
        painter_->paint(wanted, [this, area = wanted.area, order] {
            isPainting_ = false;
            show(area, order);
            if (std::exchange(isPushAwaited_, false)) {
                requestPush();
            }
        });
    }
}

void X11PlatformWindow::show(const drawing::PixelRect &area, const Order &order) {
    place(area, order);
    painter_->present();
    window_->setCutAway(false);
    window_->setMapped(true);
    retired_.reset();
}

void X11PlatformWindow::hide(const drawing::PixelRect &area, const Order &order) {
    if (painter_) {
        painter_->suspend();
    }
    window_->setCutAway(true);
    place(area, order);
    window_->setMapped(true);
    if (!isAwaitingPlace_) {
        retired_.reset();
    }
}

void X11PlatformWindow::place(const drawing::PixelRect &area, const Order &order) {
    window_->move(area);
    placed_ = order;
    if (!placement_->holds(order)) {
        if (placement_->enforce(order) == Placement::Outcome::abandoned && !isPlacementStale_) {
            surroundings_.placementChoice.abandon(surroundings_.placementChoice.habits().placement);
        }
        damageWhatComesOut(order);
    }
}

void X11PlatformWindow::preparePainter(bool withBackdrop) {
    if (painter_ && withBackdrop != paintsBackdrop_) {
        painter_.reset();
    }
    if (!painter_) {
        isPainting_ = false;
        painter_ = makePainter(withBackdrop);
        paintsBackdrop_ = withBackdrop;
    }
}

void X11PlatformWindow::dropPainter() {
    painter_.reset();
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
    if (surroundings_.compositor.isCompositing() && window_->depth() == 32) {
        return std::make_unique<TranslucentPainter>(drawing, window_->id());
    }
    if (extensions.composite && extensions.damage &&
        drawing.formats.opaque(window_->visual()) != XCB_NONE) {
        return makeScenePainter(std::make_unique<FlatRenderer>(drawing),
                                SceneBelow::Windows::opaque);
    }
    return std::make_unique<LinesPainter>(connection_, *window_);
}

std::unique_ptr<Painter>
X11PlatformWindow::makeScenePainter(std::unique_ptr<BackdropRenderer> renderer,
                                    SceneBelow::Windows windows) {
    const auto &drawing = surroundings_.drawing;
    auto scene = std::make_unique<SceneBelow>(
        connection_, surroundings_.surfaces, surroundings_.wallpaper, windows,
        [this] { return placement_->lowerWindows(wanted_.order); });
    const ScenePainter::Canvas canvas{window_->id(), window_->depth(),
                                      window_->depth() == 32
                                          ? drawing.formats.translucent()
                                          : drawing.formats.opaque(window_->visual())};
    // The painter is in the midst of its work when it fails.
    auto failed = [this, way = surroundings_.backdropRenderers.wayInUse()] {
        surroundings_.mainLoop.post(lifetime_.guard([this, way] {
            surroundings_.backdropRenderers.stepDownFrom(way);
            dropPainter();
        }));
    };
    return std::make_unique<ScenePainter>(drawing.connection, surroundings_.mainLoop,
                                          std::move(scene), canvas, std::move(renderer),
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
    if (!window_->isMapped() || !surroundings_.compositor.isCompositing() || !extensions.damage ||
        !extensions.xfixes) {
        return;
    }
    const auto staysBeneath = placement_->lowerWindows(order);
    for (const auto window : surroundings_.mirror.stacking()) {
        if (window == window_->id()) {
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
