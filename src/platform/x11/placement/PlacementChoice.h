#pragma once

#include "platform/x11/placement/PlacementKind.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <functional>
#include <optional>
#include <string>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {
class LogOnce;
}

namespace lumo::x11 {

class WindowMirror;
struct MirrorChange;

// Which placement suits the window manager that runs: by its name at first, and by its behaviour
// from then on. Chosen anew when another window manager runs, or none. Main thread only.
class PlacementChoice {
  public:
    // The arguments outlive the object.
    PlacementChoice(WindowMirror &mirror, MainLoop &mainLoop, freedesktop::LogOnce &log);

    const ManagerHabits &habits() const { return habits_; }

    // Calls the observer after habits() have changed.
    Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

    // Takes cut-outs from now on, since a placement of that kind has been abandoned. Nothing when
    // that kind is no longer the chosen one.
    void abandon(PlacementKind kind);

  private:
    void handle(const MirrorChange &change);
    void choose();
    void watchFocusedWindow();
    bool liesBeneathOthers(xcb_window_t client) const;
    void set(const ManagerHabits &habits);
    std::string managerDisplayName() const;

    const WindowMirror &mirror_;
    MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    ManagerHabits habits_;
    std::string chosenFor_; // the manager's name
    Signal<> changed_;
    Handle mirrorChanges_;
    double takeoverEnds_ = 0;             // seconds
    std::optional<xcb_window_t> watched_; // the focused window, while it lies beneath others
    Handle missedRaise_;
};

} // namespace lumo::x11
