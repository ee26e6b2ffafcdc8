#pragma once

#include "platform/MainLoop.h"
#include "platform/x11/server/CompositorSelection.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <functional>
#include <utility>

namespace lumo::x11 {

class Connection;

// Tells whether a compositing manager blends the windows of this screen. One that has announced
// itself counts from when it really has taken the windows over, which for some is long after.
// Main thread only.
class CompositorWatch {
  public:
    // Waits for the server to learn the present state.
    CompositorWatch(Connection &connection, MainLoop &mainLoop);

    bool isCompositing() const { return state_ == State::compositing; }

    // Calls the observer after isCompositing() has changed.
    Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

  private:
    enum class State {
        absent,
        announced, // but does not have the windows yet
        compositing,
    };

    void announcedIs(bool isAnnounced);
    xcb_void_cookie_t attemptToRedirect();
    void probe();
    void probed(bool couldRedirect);
    void set(State state);

    Connection &connection_;
    MainLoop &mainLoop_;
    State state_ = State::absent;
    Signal<> changed_;
    CompositorSelection selection_;
    Handle nextProbe_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
