#pragma once

#include "platform/x11/placement/PlacementKind.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {
class LogOnce;
}

namespace lumo::x11 {

class WindowMirror;
struct MirrorChange;

// Which placement suits the window manager that runs: by its name at first, and by what it does
// from then on. Another manager, or none, is chosen for afresh. Main thread only.
class PlacementChoice {
  public:
    // The arguments outlive the object.
    PlacementChoice(WindowMirror &mirror, MainLoop &mainLoop, freedesktop::LogOnce &log);

    PlacementKind kind() const { return habits_.placement; }
    bool focusRaises() const { return habits_.focusRaises; }

    // Calls the observer after kind() or focusRaises() has changed.
    Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

    // For a placement whose order somebody keeps undoing: what cannot be fought is taken instead.
    void orderDoesNotHold();

  private:
    void handle(const MirrorChange &change);
    void choose();
    void watchActivation();
    void missedRaise(xcb_window_t active);
    std::vector<xcb_window_t> ordinaryWindowsAbove(xcb_window_t client) const;
    void set(const ManagerHabits &habits);
    std::string managerInWords() const;

    const WindowMirror &mirror_;
    MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    ManagerHabits habits_;
    std::string chosenFor_; // the manager's name
    Signal<> changed_;
    Handle mirrorChanges_;
    Handle raiseIsDue_;
    std::optional<xcb_window_t>
        missedRaiseOf_; // the last window that got the focus and stayed below
};

} // namespace lumo::x11
