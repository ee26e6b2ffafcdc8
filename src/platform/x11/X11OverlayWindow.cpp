#include "platform/x11/X11OverlayWindow.h"

#include "platform/MainLoop.h"
#include "platform/Screens.h"
#include "platform/x11/BackdropRenderers.h"
#include "platform/x11/BelowPlacement.h"
#include "platform/x11/CompositorWatch.h"
#include "platform/x11/Connection.h"
#include "platform/x11/FlatRenderer.h"
#include "platform/x11/LogOnce.h"
#include "platform/x11/Redirection.h"
#include "platform/x11/RenderFormats.h"
#include "platform/x11/ScenePainter.h"
#include "platform/x11/TranslucentPainter.h"
#include "platform/x11/WindowMirror.h"

#include <sys/utsname.h>
#include <unistd.h>
#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

// What the protocol can say of a window's size.
constexpr int largestExtent = 32767;

void setText(Connection &connection, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
             std::string_view text) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

template <std::size_t count>
void setValues(Connection &connection, xcb_window_t window, std::string_view property,
               xcb_atom_t type, const std::array<std::uint32_t, count> &values) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, connection.atom(property), type,
                        32, count, values.data());
}

} // namespace

X11OverlayWindow::X11OverlayWindow(OverlaySurroundings &surroundings, const Rect &frame)
    : surroundings_(surroundings)
    , connection_(surroundings.connection)
    , redirection_(surroundings.redirection.hold())
    , colormap_(connection_)
    , window_(connection_)
    , wanted_{frame, 1, {}, {}}
    , compositorChanges_(surroundings.compositor.onChange([this] { dropPainter(); }))
    , screenChanges_(surroundings.screens.onScreenParametersDidChange([this] { requestPush(); })) {
    createWindow();
    setProperties();
    passClicks();
    placement_ = std::make_unique<BelowPlacement>(
        connection_, surroundings_.mirror, surroundings_.mainLoop, surroundings_.log, window_.id());
}

void X11OverlayWindow::createWindow() {
    const auto translucent = surroundings_.drawing.formats.translucentVisual();
    depth_ = translucent != XCB_NONE ? 32 : connection_.screen().root_depth;
    visual_ = translucent != XCB_NONE ? translucent : connection_.screen().root_visual;
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_.id(), connection_.root(),
                        visual_);
    area_ = appearance().area;
    const std::array<std::uint32_t, 4> attributes = {XCB_BACK_PIXMAP_NONE, 0, 1, colormap_.id()};
    xcb_create_window(
        connection_, depth_, window_.id(), connection_.root(), static_cast<std::int16_t>(area_.x),
        static_cast<std::int16_t>(area_.y), static_cast<std::uint16_t>(area_.width),
        static_cast<std::uint16_t>(area_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_,
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
        attributes.data());
}

void X11OverlayWindow::setProperties() {
    const auto window = window_.id();
    setText(connection_, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
            std::string_view("lumo\0Lumo", sizeof "lumo\0Lumo"));
    setText(connection_, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, "Lumo");
    setText(connection_, window, connection_.atom("_NET_WM_NAME"), connection_.atom("UTF8_STRING"),
            "Lumo");
    utsname machine{};
    if (uname(&machine) == 0) {
        setText(connection_, window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, machine.nodename);
    }
    setValues<1>(connection_, window, "_NET_WM_PID", XCB_ATOM_CARDINAL,
                 {static_cast<std::uint32_t>(getpid())});
    setValues<1>(connection_, window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                 {connection_.atom("_NET_WM_WINDOW_TYPE_UTILITY")});
    setValues<3>(connection_, window, "_NET_WM_STATE", XCB_ATOM_ATOM,
                 {connection_.atom("_NET_WM_STATE_SKIP_TASKBAR"),
                  connection_.atom("_NET_WM_STATE_SKIP_PAGER"),
                  connection_.atom("_NET_WM_STATE_STICKY")});
    constexpr std::uint32_t allDesktops = 0xffffffff;
    setValues<1>(connection_, window, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {allDesktops});
    // A compositing manager must not step aside for it because it covers a whole screen.
    constexpr std::uint32_t neverBypass = 2;
    setValues<1>(connection_, window, "_NET_WM_BYPASS_COMPOSITOR", XCB_ATOM_CARDINAL,
                 {neverBypass});
    setValues<1>(connection_, window, "_COMPTON_SHADOW", XCB_ATOM_CARDINAL, {0});
    // WM_HINTS with nothing but "wants no input", from the Inter-Client Communication Conventions.
    setValues<9>(connection_, window, "WM_HINTS", XCB_ATOM_WM_HINTS, {1});
}

void X11OverlayWindow::passClicks() {
    const auto &extensions = connection_.extensions();
    if (extensions.xfixes && extensions.shape) {
        nothing_ = makeEmptyRegion(connection_);
        xcb_xfixes_set_window_shape_region(connection_, window_.id(), XCB_SHAPE_SK_INPUT, 0, 0,
                                           nothing_.id());
        const auto reply = connection_.wait(
            xcb_shape_get_rectangles(connection_, window_.id(), XCB_SHAPE_SK_INPUT),
            xcb_shape_get_rectangles_reply);
        mayBeShown_ = reply && reply->rectangles_len == 0;
    }
    if (!mayBeShown_) {
        surroundings_.log.print("[Lumo] The X server cannot let clicks through an overlay (XFixes "
                                "2 and Shape 1.1); none is shown");
    }
}

void X11OverlayWindow::setFrame(const Rect &frame) {
    if (frame != wanted_.frame) {
        wanted_.frame = frame;
        requestPush();
    }
}

void X11OverlayWindow::setLevel(int level) {
    level_ = level;
    if (wanted_.order.kind == Order::Kind::front) {
        orderFront();
    }
}

void X11OverlayWindow::setAlphaValue(double alpha) {
    alpha = std::clamp(alpha, 0.0, 1.0);
    if (alpha != wanted_.alpha) {
        wanted_.alpha = alpha;
        requestPush();
    }
}

void X11OverlayWindow::orderFront() {
    setOrder({Order::Kind::front, XCB_NONE, level_});
}

void X11OverlayWindow::orderBelow(std::uint32_t windowNumber) {
    setOrder({Order::Kind::below, windowNumber, 0});
}

void X11OverlayWindow::orderOut() {
    setOrder({});
}

void X11OverlayWindow::setOrder(const Order &order) {
    if (order != wanted_.order || !placement_->holds(order)) {
        wanted_.order = order;
        requestPush();
    }
}

std::optional<double> X11OverlayWindow::backingScaleFactor() const {
    for (const auto &screen : surroundings_.screens.screens()) {
        if (!screen.frame.intersection(wanted_.frame).isEmpty()) {
            return screen.backingScaleFactor;
        }
    }
    return std::nullopt;
}

void X11OverlayWindow::commit(const LayerTree &tree) {
    if (tree != wanted_.tree) {
        wanted_.tree = tree;
        requestPush();
    }
}

void X11OverlayWindow::requestPush() {
    if (!isPushRequested_ && mayBeShown_) {
        isPushRequested_ = true;
        surroundings_.mainLoop.post(lifetime_.guard([this] { push(); }));
    }
}

void X11OverlayWindow::push() {
    isPushRequested_ = false;
    const auto order = wanted_.order;
    const auto wanted = appearance();
    if (order.kind == Order::Kind::out) {
        isPainting_ = false;
        if (painter_) {
            painter_->suspend();
        }
        setMapped(false);
        return;
    }
    // Its place among the windows would be a random one.
    if (!isMapped_ && !placement_->isPossible(order)) {
        return;
    }
    preparePainter(showsBackdrop(wanted.tree));
    if (wanted.alpha <= 0 || !painter_) {
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

void X11OverlayWindow::show(const PixelRect &area, const Order &order) {
    place(area, order);
    painter_->present();
    setCutAway(false);
    setMapped(true);
}

void X11OverlayWindow::hide(const PixelRect &area, const Order &order) {
    if (painter_) {
        painter_->suspend();
    }
    setCutAway(true);
    place(area, order);
    setMapped(true);
}

void X11OverlayWindow::place(const PixelRect &area, const Order &order) {
    move(area);
    if (!placement_->holds(order)) {
        placement_->enforce(order);
        damageWhatComesOut(order);
    }
}

void X11OverlayWindow::preparePainter(bool withBackdrop) {
    if (painter_ && withBackdrop != paintsBackdrop_) {
        painter_.reset();
    }
    if (!painter_) {
        isPainting_ = false;
        painter_ = makePainter(withBackdrop);
        paintsBackdrop_ = withBackdrop;
    }
}

void X11OverlayWindow::dropPainter() {
    painter_.reset();
    requestPush();
}

std::unique_ptr<Painter> X11OverlayWindow::makePainter(bool withBackdrop) {
    const auto &drawing = surroundings_.drawing;
    const auto &extensions = connection_.extensions();
    if (withBackdrop) {
        if (auto renderer = surroundings_.backdropRenderers.make()) {
            return makeScenePainter(std::move(renderer));
        }
    }
    if (surroundings_.compositor.isCompositing() && depth_ == 32) {
        return std::make_unique<TranslucentPainter>(drawing, window_.id());
    }
    if (extensions.composite && extensions.damage && drawing.formats.opaque(visual_) != XCB_NONE) {
        return makeScenePainter(std::make_unique<FlatRenderer>(drawing));
    }
    surroundings_.log.print("[Lumo] The X server lacks Composite, Damage or Render and no "
                            "compositing manager runs: the effect cannot be shown");
    return nullptr;
}

std::unique_ptr<Painter>
X11OverlayWindow::makeScenePainter(std::unique_ptr<BackdropRenderer> renderer) {
    const auto &drawing = surroundings_.drawing;
    auto scene =
        std::make_unique<SceneBelow>(connection_, surroundings_.surfaces, surroundings_.wallpaper,
                                     [this] { return placement_->lowerWindows(wanted_.order); });
    const ScenePainter::Canvas canvas{window_.id(), depth_,
                                      depth_ == 32 ? drawing.formats.translucent()
                                                   : drawing.formats.opaque(visual_)};
    // The painter is in the midst of its work when it fails.
    auto failed = [this, way = surroundings_.backdropRenderers.wayInUse()] {
        surroundings_.mainLoop.post(lifetime_.guard([this, way] {
            surroundings_.backdropRenderers.stepDownFrom(way);
            dropPainter();
        }));
    };
    return std::make_unique<ScenePainter>(drawing, surroundings_.mainLoop, std::move(scene), canvas,
                                          std::move(renderer), std::move(failed));
}

Appearance X11OverlayWindow::appearance() const {
    const auto space = surroundings_.pointSpace();
    auto area = space.pixelsOfFrame(wanted_.frame);
    area.width = std::clamp(area.width, 1, largestExtent);
    area.height = std::clamp(area.height, 1, largestExtent);
    return {area, wanted_.frame, space, wanted_.tree,
            wanted_.alpha * std::clamp(wanted_.tree.viewAlpha, 0.0, 1.0)};
}

void X11OverlayWindow::move(const PixelRect &area) {
    if (area == area_) {
        return;
    }
    const std::array<std::uint32_t, 4> values = {
        static_cast<std::uint32_t>(area.x), static_cast<std::uint32_t>(area.y),
        static_cast<std::uint32_t>(area.width), static_cast<std::uint32_t>(area.height)};
    xcb_configure_window(connection_, window_.id(),
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    area_ = area;
}

// Some compositing managers, told of a new order, draw anew only what is seen of the restacked
// window itself. What it uncovers by going down would stay as it was under the overlay.
void X11OverlayWindow::damageWhatComesOut(const Order &order) {
    const auto &extensions = connection_.extensions();
    if (!isMapped_ || !surroundings_.compositor.isCompositing() || !extensions.damage ||
        !extensions.xfixes) {
        return;
    }
    const auto staysBeneath = placement_->lowerWindows(order);
    for (const auto window : surroundings_.mirror.stacking()) {
        if (window == window_.id()) {
            break;
        }
        const auto *found = surroundings_.mirror.find(window);
        if (found->isMapped && !found->isInputOnly && !connection_.isOwn(window) &&
            std::ranges::find(staysBeneath, window) == staysBeneath.end()) {
            const xcb_rectangle_t whole = {0, 0, static_cast<std::uint16_t>(found->geometry.width),
                                           static_cast<std::uint16_t>(found->geometry.height)};
            const OwnedRegion region(connection_);
            xcb_xfixes_create_region(connection_, region.id(), 1, &whole);
            xcb_damage_add(connection_, window, region.id());
        }
    }
}

void X11OverlayWindow::setCutAway(bool isCutAway) {
    if (isCutAway != isCutAway_) {
        xcb_xfixes_set_window_shape_region(connection_, window_.id(), XCB_SHAPE_SK_BOUNDING, 0, 0,
                                           isCutAway ? nothing_.id()
                                                     : static_cast<xcb_xfixes_region_t>(XCB_NONE));
        isCutAway_ = isCutAway;
    }
}

void X11OverlayWindow::setMapped(bool isMapped) {
    if (isMapped == isMapped_) {
        return;
    }
    if (isMapped) {
        xcb_map_window(connection_, window_.id());
    } else {
        xcb_unmap_window(connection_, window_.id());
    }
    isMapped_ = isMapped;
}

} // namespace lumo::x11
