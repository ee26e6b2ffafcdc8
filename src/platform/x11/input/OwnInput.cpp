#include "platform/x11/input/OwnInput.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/windows/WindowMirror.h"

#include <unistd.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t inputTargetEvents =
    XCB_INPUT_XI_EVENT_MASK_FOCUS_IN | XCB_INPUT_XI_EVENT_MASK_FOCUS_OUT |
    XCB_INPUT_XI_EVENT_MASK_ENTER | XCB_INPUT_XI_EVENT_MASK_LEAVE;

} // namespace

OwnInput::OwnInput(Connection &connection, WindowMirror &mirror)
    : connection_(connection)
    , mirror_(mirror)
    , changes_(mirror.onChange([this](const auto &) { followMirror(); })) {
    const auto gain = [](xcb_window_t &target) {
        return [&target](const xcb_input_enter_event_t &event) { target = event.event; };
    };
    const auto lose = [](xcb_window_t &target) {
        return [&target](const xcb_input_enter_event_t &event) {
            // What goes to a window inside is still this program's.
            if (target == event.event && event.detail != XCB_NOTIFY_DETAIL_INFERIOR) {
                target = XCB_NONE;
            }
        };
    };
    auto &events = connection.events();
    events_ = {events.on(event::focusIn, gain(keyboardWindow_)),
               events.on(event::focusOut, lose(keyboardWindow_)),
               events.on(event::enter, gain(pointerWindow_)),
               events.on(event::leave, lose(pointerWindow_))};
    followMirror();
}

void OwnInput::followMirror() {
    if (std::exchange(seenRevision_, mirror_.identityRevision()) == mirror_.identityRevision()) {
        return;
    }
    std::vector<xcb_window_t> own;
    for (const auto frame : mirror_.stacking()) {
        const auto *window = mirror_.find(frame);
        if (window->isDescribed && window->processIdentifier == getpid() &&
            !connection_.isOwn(window->client)) {
            own.push_back(window->client);
            if (!std::ranges::binary_search(watched_, window->client)) {
                watch(frame, window->client);
            }
        }
    }
    std::ranges::sort(own);
    const auto before = std::exchange(watched_, std::move(own));
    const auto isGone = [this](xcb_window_t window) {
        return !std::ranges::binary_search(watched_, window);
    };
    for (auto *target : {&keyboardWindow_, &pointerWindow_}) {
        if (isGone(*target)) {
            *target = XCB_NONE;
        }
    }
    // One that has just grabbed the keyboard may not have been described yet.
    if (std::ranges::binary_search(before, grabWindow_) && isGone(grabWindow_)) {
        grabWindow_ = XCB_NONE;
    }
}

void OwnInput::watch(xcb_window_t frame, xcb_window_t client) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, inputTargetEvents};
    xcb_input_xi_select_events(connection_, client, 1, &selection.head);
    // Input may have come to the window before its events were asked for.
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_),
        lifetime_.guard([this, client](const xcb_get_input_focus_reply_t *reply) {
            if (reply != nullptr && reply->focus == client) {
                keyboardWindow_ = client;
            }
        }));
    connection_.whenReplied<xcb_query_pointer_reply_t>(
        xcb_query_pointer(connection_, connection_.root()),
        lifetime_.guard([this, frame, client](const xcb_query_pointer_reply_t *reply) {
            if (reply != nullptr && reply->child == frame) {
                pointerWindow_ = client;
            }
        }));
}

void OwnInput::handleToolkitFocus(const xcb_focus_in_event_t &event) {
    const bool isIn = (event.response_type & 0x7fU) == XCB_FOCUS_IN;
    if (isIn && event.mode == XCB_NOTIFY_MODE_GRAB) {
        grabWindow_ = event.event;
    } else if (!isIn && event.mode == XCB_NOTIFY_MODE_UNGRAB && event.event == grabWindow_) {
        grabWindow_ = XCB_NONE;
    }
}

} // namespace lumo::x11
