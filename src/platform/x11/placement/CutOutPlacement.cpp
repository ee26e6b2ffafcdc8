#include "platform/x11/placement/CutOutPlacement.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/OverlaySurface.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/windows/WindowMirror.h"

#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr double longestPause = 64; // seconds

using drawing::CutOutPiece;
using drawing::CutOutWindow;

CutOutWindow::Layer layerOf(const MirrorWindow &window) {
    switch (window.stackingLayer) {
    case StackingLayer::desktop:
    case StackingLayer::below:
        return CutOutWindow::Layer::below;
    case StackingLayer::normal:
        break;
    case StackingLayer::above:
        return CutOutWindow::Layer::above;
    case StackingLayer::floating:
        return window.isManaged || window.type == WindowFacts::Type::dock
                   ? CutOutWindow::Layer::above
                   : CutOutWindow::Layer::floating;
    }
    return CutOutWindow::Layer::ordinary;
}

} // namespace

CutOutPlacement::CutOutPlacement(Connection &connection, const WindowMirror &mirror,
                                 const MainLoop &mainLoop, freedesktop::LogOnce &log,
                                 bool focusRaises, OverlaySurface &overlay)
    : connection_(connection)
    , mirror_(mirror)
    , mainLoop_(mainLoop)
    , log_(log)
    , focusRaises_(focusRaises)
    , overlay_(overlay) {
}

// Null when the order has none, or it is not on screen.
const MirrorWindow *CutOutPlacement::referenceOf(const Order &order) const {
    const auto *reference =
        order.kind == Order::Kind::below ? mirror_.find(order.reference) : nullptr;
    return reference != nullptr && reference->isMapped ? reference : nullptr;
}

bool CutOutPlacement::isPossible(const Order &order) const {
    return order.kind == Order::Kind::front || referenceOf(order) != nullptr;
}

bool CutOutPlacement::isDialogOf(const MirrorWindow &window, const MirrorWindow &owner) const {
    if (!window.transientFor) {
        return false;
    }
    const auto *leader = mirror_.find(*window.transientFor);
    return leader == nullptr ? window.processIdentifier == owner.processIdentifier
                             : leader->frame == owner.frame;
}

CutOutWindow CutOutPlacement::describe(const MirrorWindow &window,
                                       const MirrorWindow *reference) const {
    const auto active = mirror_.activeWindow();
    const bool isKnown = window.canBeSeen() && window.isDescribed;
    return {.id = window.frame,
            .area = isKnown ? window.visibleArea() : drawing::PixelRect{},
            .layer = layerOf(window),
            .isFocused = active && mirror_.find(*active) == &window,
            .isDialogOfReference = reference != nullptr && isDialogOf(window, *reference),
            .isOwn = window.isOfThisProgram()};
}

drawing::CutOutRule CutOutPlacement::ruleOf(const Order &order,
                                            const MirrorWindow *reference) const {
    drawing::CutOutRule rule{.focusRaises = focusRaises_, .coversLayersAbove = order.level > 0};
    if (order.kind == Order::Kind::below) {
        rule.reference = reference != nullptr ? reference->frame : order.reference;
    }
    for (const auto &piece : pushed_.pieces) {
        if (piece.isClear) {
            rule.clearBefore.push_back(piece.window);
        }
    }
    return rule;
}

std::vector<CutOutPlacement::WindowShape>
CutOutPlacement::shapesOf(const std::vector<CutOutPiece> &pieces) const {
    std::vector<WindowShape> shapes;
    for (const auto &piece : pieces) {
        const auto &window = *mirror_.find(piece.window);
        if (window.shapeSerial != 0) {
            shapes.push_back({window.frame, window.geometry.x + window.borderWidth,
                              window.geometry.y + window.borderWidth, window.shapeSerial});
        }
    }
    return shapes;
}

CutOutPlacement::Plan CutOutPlacement::makePlan(const Order &order) const {
    const auto *reference = referenceOf(order);
    const auto &stacking = mirror_.stacking();
    std::vector<CutOutWindow> windows;
    auto above = stacking.size(); // how many of the windows lie above the overlay
    for (std::size_t i = stacking.size(); i-- > 0;) {
        const auto &window = *mirror_.find(stacking[i]);
        if (window.canBeSeen() || &window == reference) {
            windows.push_back(describe(window, reference));
        } else if (stacking[i] == overlay_.id()) {
            above = windows.size();
        }
    }
    const auto isClear = drawing::clearWindows(windows, ruleOf(order, reference));
    Plan plan;
    plan.shape.overlay = overlay_.area();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (isClear[i] || !mirror_.find(windows[i].id)->canBeSeen()) {
            continue;
        }
        plan.covered.push_back(windows[i].id);
        if (i < above && plan.offender == XCB_NONE && !windows[i].area.isEmpty()) {
            plan.offender = windows[i].id;
        }
    }
    leaveFloating(windows, isClear, above, plan);
    plan.shape.pieces = drawing::cutOutPieces(windows, isClear, plan.shape.overlay);
    plan.shape.windowShapes = shapesOf(plan.shape.pieces);
    return plan;
}

// What floats above all others is not cut out where it lies above the overlay as well, so that the
// effect is seen through it; what is translucent has to lie there.
void CutOutPlacement::leaveFloating(std::vector<CutOutWindow> &windows,
                                    const std::vector<bool> &isClear, std::size_t above,
                                    Plan &plan) const {
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const auto &window = *mirror_.find(windows[i].id);
        if (!isClear[i] || windows[i].layer != CutOutWindow::Layer::floating) {
            plan.floor = window.frame;
            return;
        }
        if (i < above) {
            windows[i].area = {};
        } else if (plan.offender == XCB_NONE && (window.depth == 32 || window.opacity < 1) &&
                   windows[i].area.overlaps(plan.shape.overlay)) {
            plan.offender = window.frame;
        }
    }
}

const CutOutPlacement::Plan &CutOutPlacement::plan(const Order &order) const {
    if (plannedFrom_ != mirror_.revision() || plannedOrder_ != order ||
        plan_.shape.overlay != overlay_.area()) {
        plan_ = makePlan(order);
        plannedOrder_ = order;
        plannedFrom_ = mirror_.revision();
    }
    return plan_;
}

std::vector<xcb_window_t> CutOutPlacement::lowerWindows(const Order &order) const {
    const auto &covered = plan(order).covered;
    return {covered.rbegin(), covered.rend()};
}

bool CutOutPlacement::holds(const Order &order) const {
    if (order.kind == Order::Kind::out) {
        return true;
    }
    const auto &wanted = plan(order);
    return wanted.shape == pushed_ && wanted.offender == XCB_NONE;
}

Placement::Outcome CutOutPlacement::enforce(const Order &order) {
    if (order.kind == Order::Kind::out) {
        return Outcome::pursued;
    }
    const auto &wanted = plan(order);
    if (wanted.shape != pushed_) {
        push(wanted.shape);
    }
    if (wanted.offender != XCB_NONE && !isRaising_) {
        raise(order, wanted);
    }
    return Outcome::pursued;
}

double CutOutPlacement::remainingPause() const {
    return pausedUntil_ - mainLoop_.now();
}

void CutOutPlacement::follow(const Order &order) {
    if (order.kind == Order::Kind::out) {
        return;
    }
    const auto &wanted = plan(order).shape;
    if (wanted != pushed_ && !coversWhatWasClear(wanted)) {
        push(wanted);
    }
}

bool CutOutPlacement::coversWhatWasClear(const Shape &shape) const {
    return std::ranges::any_of(pushed_.pieces, [&](const CutOutPiece &before) {
        const auto *window = before.isClear ? mirror_.find(before.window) : nullptr;
        return window != nullptr && window->canBeSeen() &&
               std::ranges::none_of(shape.pieces, [&](const CutOutPiece &now) {
                   return now.isClear && now.window == before.window;
               });
    });
}

void CutOutPlacement::push(const Shape &shape) {
    pushed_ = shape;
    overlay_.setShape(shape.windowShapes.empty() ? regionOf(shape) : regionOfShaped(shape));
}

OwnedRegion CutOutPlacement::regionOf(const Shape &shape) const {
    const auto &overlay = shape.overlay;
    const auto rectangles = toProtocol((drawing::Region(overlay) - drawing::cutOuts(shape.pieces))
                                           .translated(-overlay.x, -overlay.y));
    OwnedRegion region(connection_);
    xcb_xfixes_create_region(connection_, region.id(),
                             static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    return region;
}

// The same as drawing::cutOuts() does, in the server, which knows the windows' shapes.
OwnedRegion CutOutPlacement::regionOfShaped(const Shape &shape) const {
    const auto whole = toProtocol(shape.overlay);
    OwnedRegion shown(connection_);
    xcb_xfixes_create_region(connection_, shown.id(), 1, &whole);
    const auto covered = makeEmptyRegion(connection_);
    for (const auto &piece : shape.pieces) {
        const auto part = regionOf(piece, shape);
        if (piece.isClear) {
            xcb_xfixes_subtract_region(connection_, part.id(), covered.id(), part.id());
            xcb_xfixes_subtract_region(connection_, shown.id(), part.id(), shown.id());
        } else {
            xcb_xfixes_union_region(connection_, covered.id(), part.id(), covered.id());
        }
    }
    xcb_xfixes_translate_region(connection_, shown.id(),
                                static_cast<std::int16_t>(-shape.overlay.x),
                                static_cast<std::int16_t>(-shape.overlay.y));
    return shown;
}

OwnedRegion CutOutPlacement::regionOf(const CutOutPiece &piece, const Shape &shape) const {
    const auto area = toProtocol(piece.area);
    OwnedRegion part(connection_);
    xcb_xfixes_create_region(connection_, part.id(), 1, &area);
    const auto found = std::ranges::find(shape.windowShapes, piece.window, &WindowShape::window);
    if (found != shape.windowShapes.end()) {
        const OwnedRegion bounding(connection_);
        xcb_xfixes_create_region_from_window(connection_, bounding.id(), piece.window,
                                             XCB_SHAPE_SK_BOUNDING);
        xcb_xfixes_translate_region(connection_, bounding.id(), static_cast<std::int16_t>(found->x),
                                    static_cast<std::int16_t>(found->y));
        xcb_xfixes_intersect_region(connection_, part.id(), bounding.id(), part.id());
    }
    return part;
}

void CutOutPlacement::raise(const Order &order, const Plan &plan) {
    const double now = mainLoop_.now();
    if (now < pausedUntil_) {
        return;
    }
    if (corrections_.isConflict(order, plan.offender, now)) {
        log_.print("[Lumo] Something keeps taking an overlay from the top; it is put back ever "
                   "more seldom");
        corrections_.clear();
        pausedUntil_ = now + pause_;
        pause_ = std::min(2 * pause_, longestPause);
        return;
    }
    // Next to what is seen: compositing managers with stacking layers of their own draw a window in
    // the layer of the one right beneath it, and in the highest where that is unknown to them.
    if (plan.floor != XCB_NONE) {
        const std::array<std::uint32_t, 2> values = {plan.floor, XCB_STACK_MODE_ABOVE};
        xcb_configure_window(connection_, overlay_.id(),
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                             values.data());
    } else {
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(connection_, overlay_.id(), XCB_CONFIG_WINDOW_STACK_MODE, &below);
    }
    isRaising_ = true;
    // Its events have arrived by the time this is answered.
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_),
        lifetime_.guard([this](const auto *) { isRaising_ = false; }));
}

} // namespace lumo::x11
