#include "platform/x11/placement/PlacementChoice.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

// How long a window manager may leave the focused window beneath others, in seconds, and how long
// one that has just taken over may bring the windows into its own order.
constexpr double longestRaise = 0.2;
constexpr double longestTakeover = 1;

} // namespace

PlacementChoice::PlacementChoice(WindowMirror &mirror, MainLoop &mainLoop,
                                 freedesktop::LogOnce &log)
    : mirror_(mirror)
    , mainLoop_(mainLoop)
    , log_(log)
    , habits_(habitsOf(mirror.windowManagerName()))
    , chosenFor_(mirror.windowManagerName())
    , mirrorChanges_(mirror.onChange([this](const MirrorChange &change) { handle(change); })) {
    watchFocusedWindow();
}

void PlacementChoice::handle(const MirrorChange &change) {
    if (change.windowManager) {
        choose();
    }
    watchFocusedWindow();
}

void PlacementChoice::choose() {
    const auto name = mirror_.windowManagerName();
    if (std::exchange(chosenFor_, name) == name) {
        return;
    }
    takeoverEnds_ = mainLoop_.now() + longestTakeover;
    missedRaise_.reset();
    set(habitsOf(name));
}

// Whether focusing never raised it or a client has lowered it since is all the same: overlays that
// lie between windows leave all above it uncovered.
void PlacementChoice::watchFocusedWindow() {
    const auto active = mirror_.activeWindow();
    if (!habits_.focusRaises || !active || !liesBeneathOthers(*active)) {
        watched_.reset();
        missedRaise_.reset();
        return;
    }
    if (std::exchange(watched_, active) == active) {
        return;
    }
    const double due = std::max(mainLoop_.now() + longestRaise, takeoverEnds_);
    missedRaise_ = mainLoop_.after(due - mainLoop_.now(), [this] {
        log_.print("[Lumo] Focus does not raise windows under " + managerDisplayName() +
                   ", or a window was lowered; overlays lie on top, with cut-outs for what stays "
                   "clear");
        set({PlacementKind::cutOuts, false});
    });
}

// Beneath ordinary windows that are no dialogs of its own application.
bool PlacementChoice::liesBeneathOthers(xcb_window_t client) const {
    const auto *active = mirror_.find(client);
    if (active == nullptr || !active->isMapped || active->stackingLayer != StackingLayer::normal) {
        return false;
    }
    const auto &stacking = mirror_.stacking();
    const auto place = std::ranges::find(stacking, active->frame);
    return std::any_of(place, stacking.end(), [&](xcb_window_t frame) {
        const auto &window = *mirror_.find(frame);
        const bool isDialog =
            window.transientFor && window.processIdentifier == active->processIdentifier;
        return &window != active && window.canBeSeen() && !window.isMinimized() && !isDialog &&
               window.stackingLayer == StackingLayer::normal &&
               (window.isManaged || mirror_.windowManagerName().empty()) &&
               mirror_.isOnShownDesktop(window);
    });
}

void PlacementChoice::abandon(PlacementKind kind) {
    if (kind != habits_.placement || kind == PlacementKind::cutOuts) {
        return;
    }
    log_.print("[Lumo] " + managerDisplayName() +
               " keeps taking overlays out of their place; they lie on top now, with cut-outs for "
               "what stays clear");
    set({PlacementKind::cutOuts, habits_.focusRaises});
}

void PlacementChoice::set(const ManagerHabits &habits) {
    if (habits != habits_) {
        habits_ = habits;
        changed_.emit();
    }
}

std::string PlacementChoice::managerDisplayName() const {
    const auto &name = mirror_.windowManagerName();
    return name.empty() ? std::string("this desktop") : name;
}

} // namespace lumo::x11
