#include "platform/x11/painting/CompositorWatch.h"

#include "platform/x11/server/Connection.h"

#include <xcb/composite.h>

namespace lumo::x11 {

namespace {

constexpr double probeInterval = 1.0 / 60;

} // namespace

CompositorWatch::CompositorWatch(Connection &connection, MainLoop &mainLoop)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , selection_(connection, [this](xcb_window_t owner) { announcedIs(owner != XCB_NONE); }) {
    if (!connection_.extensions().xfixes || !connection_.extensions().composite) {
        return;
    }
    const auto owner = connection_.wait(selection_.requestOwner(), xcb_get_selection_owner_reply);
    if (!owner || owner->owner == XCB_NONE) {
        return;
    }
    state_ = State::announced;
    const auto attempt = attemptToRedirect();
    probed(XcbPointer<xcb_generic_error_t>(xcb_request_check(connection_, attempt)) == nullptr);
}

void CompositorWatch::announcedIs(bool isAnnounced) {
    if (!isAnnounced) {
        nextProbe_.reset();
        set(State::absent);
    } else if (!isCompositing()) {
        set(State::announced);
        probe();
    }
}

// Only one client may redirect a window manually, so an attempt of ours fails once a compositing
// manager has the windows. The grab keeps our attempt from failing theirs.
xcb_void_cookie_t CompositorWatch::attemptToRedirect() {
    xcb_grab_server(connection_);
    const auto window = xcb_generate_id(connection_);
    const std::uint32_t overrideRedirect = 1;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, connection_.root(), -1, -1, 1, 1,
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    const auto attempt =
        xcb_composite_redirect_window_checked(connection_, window, XCB_COMPOSITE_REDIRECT_MANUAL);
    xcb_destroy_window(connection_, window);
    xcb_ungrab_server(connection_);
    return attempt;
}

void CompositorWatch::probe() {
    connection_.whenHandled(attemptToRedirect(),
                            lifetime_.guard([this](bool succeeded) { probed(succeeded); }));
}

void CompositorWatch::probed(bool couldRedirect) {
    if (state_ == State::absent) {
        return;
    }
    if (couldRedirect) {
        nextProbe_ = mainLoop_.after(probeInterval, [this] { probe(); });
    } else {
        set(State::compositing);
    }
}

void CompositorWatch::set(State state) {
    const bool wasCompositing = isCompositing();
    state_ = state;
    if (isCompositing() != wasCompositing) {
        changed_.emit();
    }
}

} // namespace lumo::x11
