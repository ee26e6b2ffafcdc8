#include "platform/x11/placement/StackedPlacement.h"

#include "platform/MainLoop.h"
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <iterator>

namespace lumo::x11 {

namespace {

std::size_t indexOf(const std::vector<xcb_window_t> &windows, xcb_window_t window) {
    return static_cast<std::size_t>(std::ranges::find(windows, window) - windows.begin());
}

} // namespace

StackedPlacement::StackedPlacement(Connection &connection, const WindowMirror &mirror,
                                   const MainLoop &mainLoop, xcb_window_t overlay)
    : connection_(connection)
    , mirror_(mirror)
    , mainLoop_(mainLoop)
    , overlay_(overlay) {
}

std::optional<StackedPlacement::Target> StackedPlacement::target(const Order &order) const {
    if (order.kind == Order::Kind::front) {
        return targetOfFront(order.level);
    }
    const auto *reference = mirror_.find(order.reference);
    if (order.kind == Order::Kind::out || reference == nullptr || !reference->isMapped) {
        return std::nullopt;
    }
    return Target{reference, XCB_STACK_MODE_BELOW, indexOf(mirror_.stacking(), reference->frame)};
}

StackedPlacement::Target StackedPlacement::targetOfFront(int level) const {
    const auto &stacking = mirror_.stacking();
    if (level > 0) {
        return {nullptr, XCB_STACK_MODE_ABOVE, stacking.size()};
    }
    Target target{nullptr, XCB_STACK_MODE_BELOW, 0};
    for (std::size_t index = stacking.size(); index > 0; --index) {
        const auto *window = mirror_.find(stacking[index - 1]);
        if (!window->canBeSeen() || window->stackingLayer > StackingLayer::normal) {
            continue;
        }
        if (window->isOfThisProgram()) {
            target = {window, XCB_STACK_MODE_BELOW, index - 1};
        } else if (target.sibling != nullptr) {
            break;
        } else {
            return {window, XCB_STACK_MODE_ABOVE, index};
        }
    }
    return target;
}

bool StackedPlacement::isPossible(const Order &order) const {
    return target(order).has_value();
}

bool StackedPlacement::holds(const Order &order) const {
    const auto wanted = target(order);
    return !wanted || offender(*wanted) == XCB_NONE;
}

// A visible window on the wrong side of the overlay, nearest to where the overlay should be; the
// overlay itself while it is nowhere.
xcb_window_t StackedPlacement::offender(const Target &target) const {
    const auto &stacking = mirror_.stacking();
    const auto *overlay = mirror_.find(overlay_);
    if (overlay == nullptr) {
        return overlay_;
    }
    const auto place = indexOf(stacking, overlay->frame);
    const auto canBeSeen = [this](xcb_window_t window) {
        return mirror_.find(window)->canBeSeen();
    };
    const auto at = [&](std::size_t index) {
        return stacking.begin() + static_cast<std::ptrdiff_t>(index);
    };
    if (place < target.lowerCount) {
        const auto last = std::make_reverse_iterator(at(place));
        const auto found =
            std::find_if(std::make_reverse_iterator(at(target.lowerCount)), last, canBeSeen);
        return found == last ? static_cast<xcb_window_t>(XCB_NONE) : *found;
    }
    const auto found = std::find_if(at(target.lowerCount), at(place), canBeSeen);
    return found == at(place) ? static_cast<xcb_window_t>(XCB_NONE) : *found;
}

std::vector<xcb_window_t> StackedPlacement::lowerWindows(const Order &order) const {
    const auto &stacking = mirror_.stacking();
    const auto *overlay = mirror_.find(overlay_);
    const auto wanted = target(order);
    const auto count = wanted    ? wanted->lowerCount
                       : overlay ? indexOf(stacking, overlay->frame)
                                 : stacking.size();
    std::vector<xcb_window_t> windows(stacking.begin(),
                                      stacking.begin() + static_cast<std::ptrdiff_t>(count));
    std::erase_if(windows,
                  [this](xcb_window_t window) { return !mirror_.find(window)->canBeSeen(); });
    return windows;
}

bool StackedPlacement::isConflict(const Order &order, const Target &target) {
    return corrections_.isConflict(order, offender(target), mainLoop_.now());
}

} // namespace lumo::x11
