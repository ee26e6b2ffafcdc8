#include "platform/x11/placement/CutOutPlacement.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/OverlaySurface.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/ServerResource.h"
#include "platform/x11/windows/WindowMirror.h"

#include <xcb/shape.h>

#include <algorithm>

namespace lumo::x11 {

namespace {

constexpr double longestPause = 64; // seconds

bool overlap(const drawing::PixelRect &a, const drawing::PixelRect &b) {
    return !a.intersection(b).isEmpty();
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

CutOutPlacement::~CutOutPlacement() {
    overlay_.setShape({});
}

bool CutOutPlacement::isPossible(const Order &order) const {
    if (order.kind != Order::Kind::below) {
        return order.kind == Order::Kind::front;
    }
    const auto *reference = mirror_.find(order.reference);
    return reference != nullptr && reference->isMapped;
}

bool CutOutPlacement::belongsTo(const MirrorWindow &window, const MirrorWindow &owner) const {
    if (!window.transientFor) {
        return false;
    }
    const auto *leader = mirror_.find(*window.transientFor);
    return leader == nullptr ? window.processIdentifier == owner.processIdentifier
                             : leader->frame == owner.frame;
}

CutOutPlacement::Rule CutOutPlacement::ruleOf(const Order &order) const {
    Rule rule{order, nullptr, 0, nullptr};
    const auto *reference =
        order.kind == Order::Kind::below ? mirror_.find(order.reference) : nullptr;
    if (reference != nullptr && reference->isMapped) {
        const auto &stacking = mirror_.stacking();
        rule.reference = reference;
        rule.referenceIndex = static_cast<std::size_t>(
            std::ranges::find(stacking, reference->frame) - stacking.begin());
    }
    if (const auto active = mirror_.activeWindow()) {
        rule.active = mirror_.find(*active);
    }
    return rule;
}

bool CutOutPlacement::staysClear(const MirrorWindow &window, std::size_t index,
                                 const Rule &rule) const {
    if (window.stackingLayer != StackingLayer::normal) {
        return window.stackingLayer > StackingLayer::normal && rule.order.level <= 0;
    }
    if (rule.order.kind != Order::Kind::below) {
        return false;
    }
    if (rule.reference == nullptr) {
        // What was clear stays so until another order comes.
        return std::ranges::any_of(pushed_.pieces, [&](const Piece &piece) {
            return piece.isHole && piece.window == window.frame;
        });
    }
    if (focusRaises_ || &window == rule.reference) {
        return index >= rule.referenceIndex;
    }
    return &window == rule.active ||
           (index > rule.referenceIndex &&
            (overlap(window.visibleArea(), rule.reference->visibleArea()) ||
             belongsTo(window, *rule.reference)));
}

const CutOutPlacement::Plan &CutOutPlacement::plan(const Order &order) const {
    if (plannedFrom_ != mirror_.revision() || plannedOrder_ != order ||
        plan_.overlay != overlay_.area()) {
        plan_ = makePlan(order);
        plannedOrder_ = order;
        plannedFrom_ = mirror_.revision();
    }
    return plan_;
}

CutOutPlacement::Plan CutOutPlacement::makePlan(const Order &order) const {
    Plan plan{overlay_.area(), {}};
    const auto rule = ruleOf(order);
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0;) {
        const auto &window = *mirror_.find(stacking[i]);
        const auto area = window.visibleArea();
        if (window.canBeSeen() && window.isDescribed && overlap(area, plan.overlay)) {
            plan.pieces.push_back({window.frame, area, window.geometry, window.shapeSerial,
                                   staysClear(window, i, rule)});
        }
    }
    // What hides no hole has no part in it.
    drawing::PixelRect holesBeneath;
    std::vector<Piece> needed;
    std::for_each(plan.pieces.rbegin(), plan.pieces.rend(), [&](const Piece &piece) {
        if (piece.isHole) {
            holesBeneath = holesBeneath.united(piece.area);
        }
        if (piece.isHole || overlap(piece.area, holesBeneath)) {
            needed.push_back(piece);
        }
    });
    std::ranges::reverse(needed);
    plan.pieces = std::move(needed);
    return plan;
}

std::vector<xcb_window_t> CutOutPlacement::lowerWindows(const Order &order) const {
    std::vector<xcb_window_t> windows;
    const auto rule = ruleOf(order);
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = 0; i < stacking.size(); ++i) {
        const auto &window = *mirror_.find(stacking[i]);
        if (window.canBeSeen() && !staysClear(window, i, rule)) {
            windows.push_back(window.frame);
        }
    }
    return windows;
}

// The topmost window above the overlay that should be seen through it.
xcb_window_t CutOutPlacement::coveredWindowAbove(const Order &order) const {
    const auto rule = ruleOf(order);
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0 && stacking[i] != overlay_.id();) {
        const auto &window = *mirror_.find(stacking[i]);
        if (window.canBeSeen() && window.isDescribed && !staysClear(window, i, rule)) {
            return window.frame;
        }
    }
    return XCB_NONE;
}

bool CutOutPlacement::holds(const Order &order) const {
    return order.kind == Order::Kind::out ||
           (plan(order) == pushed_ && coveredWindowAbove(order) == XCB_NONE);
}

Placement::Outcome CutOutPlacement::enforce(const Order &order) {
    if (order.kind == Order::Kind::out) {
        return Outcome::pursued;
    }
    if (const auto &wanted = plan(order); wanted != pushed_) {
        push(wanted);
    }
    if (const auto offender = coveredWindowAbove(order); offender != XCB_NONE && !isRaising_) {
        raise(order, offender);
    }
    return Outcome::pursued;
}

void CutOutPlacement::follow(const Order &order) {
    if (order.kind == Order::Kind::out) {
        return;
    }
    if (const auto &wanted = plan(order); wanted != pushed_ && !coversWhatWasClear(wanted)) {
        push(wanted);
    }
}

bool CutOutPlacement::coversWhatWasClear(const Plan &plan) const {
    return std::ranges::any_of(pushed_.pieces, [&](const Piece &before) {
        const auto *window = before.isHole ? mirror_.find(before.window) : nullptr;
        return window != nullptr && window->canBeSeen() &&
               std::ranges::none_of(plan.pieces, [&](const Piece &now) {
                   return now.isHole && now.window == before.window;
               });
    });
}

void CutOutPlacement::push(const Plan &plan) {
    pushed_ = plan;
    const auto whole = toProtocol(plan.overlay);
    OwnedRegion shown(connection_);
    xcb_xfixes_create_region(connection_, shown.id(), 1, &whole);
    const auto covered = makeEmptyRegion(connection_);
    for (const auto &piece : plan.pieces) {
        const auto area = toProtocol(piece.area);
        const OwnedRegion part(connection_);
        xcb_xfixes_create_region(connection_, part.id(), 1, &area);
        if (piece.shapeSerial != 0) {
            const OwnedRegion shape(connection_);
            xcb_xfixes_create_region_from_window(connection_, shape.id(), piece.window,
                                                 XCB_SHAPE_SK_BOUNDING);
            const int border = mirror_.find(piece.window)->borderWidth;
            xcb_xfixes_translate_region(connection_, shape.id(),
                                        static_cast<std::int16_t>(piece.geometry.x + border),
                                        static_cast<std::int16_t>(piece.geometry.y + border));
            xcb_xfixes_intersect_region(connection_, part.id(), shape.id(), part.id());
        }
        if (piece.isHole) {
            xcb_xfixes_subtract_region(connection_, part.id(), covered.id(), part.id());
            xcb_xfixes_subtract_region(connection_, shown.id(), part.id(), shown.id());
        } else {
            xcb_xfixes_union_region(connection_, covered.id(), part.id(), covered.id());
        }
    }
    xcb_xfixes_translate_region(connection_, shown.id(), static_cast<std::int16_t>(-plan.overlay.x),
                                static_cast<std::int16_t>(-plan.overlay.y));
    overlay_.setShape(std::move(shown));
}

void CutOutPlacement::raise(const Order &order, xcb_window_t offender) {
    const double now = mainLoop_.now();
    if (now < pausedUntil_) {
        return;
    }
    if (corrections_.isConflict(order, offender, now)) {
        log_.print("[Lumo] Something keeps taking an overlay from the top; it is put back ever "
                   "more seldom");
        corrections_.clear();
        pausedUntil_ = now + pause_;
        pause_ = std::min(2 * pause_, longestPause);
        return;
    }
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection_, overlay_.id(), XCB_CONFIG_WINDOW_STACK_MODE, &above);
    isRaising_ = true;
    // What came of it has been announced by the time this is answered.
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_),
        lifetime_.guard([this](const auto *) { isRaising_ = false; }));
}

} // namespace lumo::x11
