#include "platform/x11/placement/ManagedPlacement.h"

#include "platform/MainLoop.h"
#include "platform/x11/placement/PlacementChoice.h"
#include "platform/x11/server/ClientMessage.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

namespace lumo::x11 {

namespace {

// How long, in seconds, a manager may take to answer a request while nothing else happens, and how
// long it is left alone in any case: it may be about to raise something.
constexpr double longestAnswer = 0.5;
constexpr double shortestAnswer = 0.01;

// How many requests in a row may go unheard.
constexpr int mostUnheard = 8;

} // namespace

ManagedPlacement::ManagedPlacement(Connection &connection, const WindowMirror &mirror,
                                   const MainLoop &mainLoop, PlacementChoice &choice,
                                   xcb_window_t overlay)
    : StackedPlacement(connection, mirror, mainLoop, choice, overlay)
    , choice_(choice) {
}

bool ManagedPlacement::mayBeSeen(const Order &order) {
    const auto *overlay = mirror_.find(overlay_);
    hasBeenPlaced_ |= overlay != nullptr && overlay->isManaged && overlay->isMapped && holds(order);
    return hasBeenPlaced_;
}

bool ManagedPlacement::isAnswerDue(const Order &order) const {
    const double waited = mainLoop_.now() - askedAt_;
    return order != asked_ || waited >= longestAnswer ||
           (mirror_.revision() != askedIn_ && waited >= shortestAnswer);
}

void ManagedPlacement::enforce(const Order &order) {
    const auto wanted = target(order);
    if (!wanted || !isAnswerDue(order)) {
        return;
    }
    const bool isFirst = order != asked_;
    const bool isUnheard = !isFirst && mirror_.revision() == askedIn_;
    unheard_ = isUnheard ? unheard_ + 1 : 0;
    if (unheard_ >= mostUnheard) {
        choice_.orderDoesNotHold();
        return;
    }
    const auto *overlay = mirror_.find(overlay_);
    const bool isManaged = overlay != nullptr && overlay->isManaged;
    if (isManaged && overlay->isMapped && !isUnheard && !mayCorrect(order)) {
        return;
    }
    asked_ = order;
    askedAt_ = mainLoop_.now();
    askedIn_ = mirror_.revision();
    if (!isManaged) {
        return;
    }
    if (!overlay->isMapped) {
        xcb_map_window(connection_, overlay_); // somebody has minimised it
    }
    ask(*wanted);
}

void ManagedPlacement::ask(const Target &wanted) {
    constexpr std::uint32_t sourcePager = 2;
    askWindowManager(
        connection_, overlay_, connection_.atom("_NET_RESTACK_WINDOW"),
        {sourcePager,
         wanted.sibling != nullptr ? wanted.sibling->client : static_cast<xcb_window_t>(XCB_NONE),
         wanted.stackMode});
}

} // namespace lumo::x11
