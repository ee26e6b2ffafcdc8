#include "platform/x11/placement/PlacementChoice.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

// How long after it has focused a window a window manager may take to raise it, in seconds.
constexpr double longestRaise = 0.5;

} // namespace

PlacementChoice::PlacementChoice(WindowMirror &mirror, MainLoop &mainLoop,
                                 freedesktop::LogOnce &log)
    : mirror_(mirror)
    , mainLoop_(mainLoop)
    , log_(log)
    , habits_(habitsOf(mirror.windowManagerName()))
    , chosenFor_(mirror.windowManagerName())
    , mirrorChanges_(mirror.onChange([this](const MirrorChange &change) { handle(change); })) {
}

void PlacementChoice::handle(const MirrorChange &change) {
    if (change.windowManager) {
        choose();
    } else if (change.activeWindow) {
        watchActivation();
    }
}

void PlacementChoice::choose() {
    const auto name = mirror_.windowManagerName();
    if (std::exchange(chosenFor_, name) == name) {
        return;
    }
    raiseIsDue_.reset();
    missedRaiseOf_.reset();
    set(habitsOf(name));
}

void PlacementChoice::watchActivation() {
    raiseIsDue_.reset();
    const auto active = mirror_.activeWindow();
    if (!active || !habits_.focusRaises) {
        return;
    }
    auto above = ordinaryWindowsAbove(*active);
    if (above.empty()) {
        missedRaiseOf_.reset();
        return;
    }
    raiseIsDue_ = mainLoop_.after(longestRaise, [this, active, above = std::move(above)] {
        const auto stillAbove = ordinaryWindowsAbove(*active);
        const bool hasStayed = std::ranges::any_of(above, [&](xcb_window_t window) {
            return std::ranges::find(stillAbove, window) != stillAbove.end();
        });
        if (hasStayed && mirror_.activeWindow() == active) {
            missedRaise(*active);
        } else {
            missedRaiseOf_.reset();
        }
    });
}

// Once may be chance, as when one window manager replaces another.
void PlacementChoice::missedRaise(xcb_window_t active) {
    if (std::exchange(missedRaiseOf_, active).value_or(active) == active) {
        return;
    }
    log_.print("[Lumo] Focus does not raise windows under " + managerDisplayName() +
               "; overlays lie on top, with cut-outs for what stays clear");
    set({PlacementKind::cutOuts, false});
}

// Of other programs, and neither docks nor dialogs.
std::vector<xcb_window_t> PlacementChoice::ordinaryWindowsAbove(xcb_window_t client) const {
    std::vector<xcb_window_t> windows;
    const auto *active = mirror_.find(client);
    if (active == nullptr || !active->isMapped || active->stackingLayer != StackingLayer::normal) {
        return windows;
    }
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0 && stacking[i] != active->frame;) {
        const auto &window = *mirror_.find(stacking[i]);
        if (window.isMapped && window.isManaged && !window.isInputOnly && !window.isOwn &&
            window.stackingLayer == StackingLayer::normal && !window.transientFor &&
            window.processIdentifier != active->processIdentifier) {
            windows.push_back(window.frame);
        }
    }
    return windows;
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
    return name.empty() ? std::string("The desktop") : name;
}

} // namespace lumo::x11
