#include "platform/x11/placement/ManagedPlacement.h"

#include "platform/MainLoop.h"
#include "platform/x11/server/ClientMessage.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

namespace lumo::x11 {

namespace {

// How long, in seconds, a window manager may take over a request while nothing else happens, and
// how long it is left alone in any case: it may be about to raise something.
constexpr double longestWait = 0.5;
constexpr double shortestWait = 0.01;

// How many requests in a row it may ignore.
constexpr int mostIgnored = 8;

} // namespace

bool ManagedPlacement::mayBeSeen(const Order &order) {
    const auto *overlay = mirror_.find(overlay_);
    hasBeenPlaced_ |= overlay != nullptr && overlay->isManaged && overlay->isMapped && holds(order);
    return hasBeenPlaced_;
}

bool ManagedPlacement::isRequestDue(const Order &order) const {
    const double waited = mainLoop_.now() - askedAt_;
    return order != asked_ || waited >= longestWait ||
           (mirror_.revision() != askedIn_ && waited >= shortestWait);
}

Placement::Outcome ManagedPlacement::enforce(const Order &order) {
    const auto wanted = target(order);
    if (!wanted || !isRequestDue(order)) {
        return Outcome::pursued;
    }
    const bool wasIgnored = order == asked_ && mirror_.revision() == askedIn_;
    ignored_ = wasIgnored ? ignored_ + 1 : 0;
    if (ignored_ >= mostIgnored) {
        return Outcome::abandoned;
    }
    const auto *overlay = mirror_.find(overlay_);
    const bool isManaged = overlay != nullptr && overlay->isManaged;
    if (isManaged && overlay->isMapped && !wasIgnored && isConflict(order, *wanted)) {
        return Outcome::abandoned;
    }
    asked_ = order;
    askedAt_ = mainLoop_.now();
    askedIn_ = mirror_.revision();
    if (isManaged && !overlay->isMapped) {
        xcb_map_window(connection_, overlay_); // it has been minimised
    }
    if (isManaged) {
        ask(*wanted);
    }
    return Outcome::pursued;
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
