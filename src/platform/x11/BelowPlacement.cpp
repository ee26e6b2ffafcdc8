#include "platform/x11/BelowPlacement.h"

#include "platform/x11/Connection.h"
#include "platform/x11/LogOnce.h"
#include "platform/x11/WindowMirror.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace lumo::x11 {

namespace {

// How often one and the same order is corrected: many times in a row as windows come up, but in the
// long run only so often, since that is a fight with somebody.
constexpr double burstOfCorrections = 20;
constexpr double correctionsPerSecond = 1;

std::size_t indexOf(const std::vector<xcb_window_t> &windows, xcb_window_t window) {
    return static_cast<std::size_t>(std::ranges::find(windows, window) - windows.begin());
}

} // namespace

BelowPlacement::BelowPlacement(Connection &connection, const WindowMirror &mirror,
                               const MainLoop &mainLoop, LogOnce &log, xcb_window_t overlay)
    : connection_(connection)
    , mirror_(mirror)
    , mainLoop_(mainLoop)
    , log_(log)
    , overlay_(overlay) {
}

bool BelowPlacement::isVisible(xcb_window_t window) const {
    const auto *found = mirror_.find(window);
    return found != nullptr && found->isMapped && !found->isInputOnly && !connection_.isOwn(window);
}

bool BelowPlacement::isWithinNormalBand(xcb_window_t window) const {
    return mirror_.find(window)->band <= WindowBand::normal;
}

std::optional<BelowPlacement::Target> BelowPlacement::target(const Order &order) const {
    if (order.kind == Order::Kind::front) {
        return targetOfFront(order.level);
    }
    const auto *reference = mirror_.find(order.reference);
    if (order.kind == Order::Kind::out || reference == nullptr || !reference->isMapped) {
        return std::nullopt;
    }
    return Target{reference->frame, XCB_STACK_MODE_BELOW,
                  indexOf(mirror_.stacking(), reference->frame)};
}

BelowPlacement::Target BelowPlacement::targetOfFront(int level) const {
    const auto &stacking = mirror_.stacking();
    if (level > 0) {
        return {XCB_NONE, XCB_STACK_MODE_ABOVE, stacking.size()};
    }
    for (std::size_t index = stacking.size(); index > 0; --index) {
        const auto window = stacking[index - 1];
        if (isVisible(window) && isWithinNormalBand(window)) {
            return {window, XCB_STACK_MODE_ABOVE, index};
        }
    }
    return {XCB_NONE, XCB_STACK_MODE_BELOW, 0};
}

bool BelowPlacement::isPossible(const Order &order) const {
    return target(order).has_value();
}

bool BelowPlacement::holds(const Order &order) const {
    const auto wanted = target(order);
    if (!wanted) {
        return true;
    }
    // It may be anywhere between the highest visible window that is to be beneath it and the lowest
    // that is to be above.
    const auto &stacking = mirror_.stacking();
    const auto boundary = stacking.begin() + static_cast<std::ptrdiff_t>(wanted->lowerCount);
    const auto visible = [this](xcb_window_t window) { return isVisible(window); };
    const auto beneath =
        std::find_if(std::make_reverse_iterator(boundary), stacking.rend(), visible).base();
    const auto above = std::find_if(boundary, stacking.end(), visible);
    return std::find(beneath, above, overlay_) != above;
}

std::vector<xcb_window_t> BelowPlacement::lowerWindows(const Order &order) const {
    const auto &stacking = mirror_.stacking();
    const auto wanted = target(order);
    const auto count = wanted ? wanted->lowerCount : indexOf(stacking, overlay_);
    std::vector<xcb_window_t> windows(stacking.begin(),
                                      stacking.begin() + static_cast<std::ptrdiff_t>(count));
    std::erase_if(windows, [this](xcb_window_t window) { return connection_.isOwn(window); });
    return windows;
}

void BelowPlacement::enforce(const Order &order) {
    const auto wanted = target(order);
    if (!wanted || underWay_ == order || !mayCorrect(order)) {
        return;
    }
    const std::array<std::uint32_t, 2> values = {wanted->sibling, wanted->stackMode};
    if (wanted->sibling == XCB_NONE) {
        xcb_configure_window(connection_, overlay_, XCB_CONFIG_WINDOW_STACK_MODE, &values[1]);
    } else {
        xcb_configure_window(connection_, overlay_,
                             XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                             values.data());
    }
    // What came of it has been announced by the time this is answered.
    underWay_ = order;
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_), lifetime_.guard([this, order](const auto *) {
            if (underWay_ == order) {
                underWay_.reset();
            }
        }));
}

bool BelowPlacement::mayCorrect(const Order &order) {
    const double now = mainLoop_.now();
    allowance_ =
        corrected_ == order
            ? std::min(burstOfCorrections, allowance_ + (now - correctedAt_) * correctionsPerSecond)
            : burstOfCorrections;
    corrected_ = order;
    correctedAt_ = now;
    if (allowance_ >= 1) {
        allowance_ -= 1;
        return true;
    }
    log_.print("[Lumo] Something keeps taking an overlay out of its place among the windows; it is "
               "now put back once per second");
    return false;
}

} // namespace lumo::x11
