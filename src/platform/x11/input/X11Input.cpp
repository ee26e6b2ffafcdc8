#include "platform/x11/input/X11Input.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/XcbXkb.h"

#include <utility>

namespace lumo::x11 {

X11Input::X11Input(Connection &connection, WindowMirror &mirror, const X11Screens &screens,
                   std::function<bool()> isActive, const Log &log)
    : connection_(connection)
    , isActive_(std::move(isActive))
    , modifiers_(connection)
    , monitors_(connection, modifiers_, screens)
    , hotKeys_(connection, modifiers_, log)
    , router_(connection.extensions().xkb) {
    if (connection.extensions().xinput) {
        ownInput_.emplace(connection, mirror);
    }
    events_ = connection.onEvent([this](const xcb_generic_event_t &event) { handle(event); });
}

InputFocus X11Input::focus() const {
    auto focus = ownInput_ ? ownInput_->focus() : InputFocus{};
    focus.isActive = isActive_();
    return focus;
}

void X11Input::handle(const xcb_generic_event_t &event) {
    const auto &extensions = connection_.extensions();
    const auto type = event.response_type & 0x7fU;
    if (type == XCB_GE_GENERIC) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
        if (extensions.xinput && generic.extension == extensions.xinputOpcode) {
            handleInput(generic);
        }
    } else if (type == XCB_KEY_PRESS) {
        handlePress(KeySource::grab, reinterpret_cast<const xcb_key_press_event_t &>(event));
    } else if (type == XCB_KEY_RELEASE) {
        handleRelease(KeySource::grab, reinterpret_cast<const xcb_key_release_event_t &>(event));
    } else if (extensions.xkb && type == extensions.xkbFirstEvent) {
        const auto &change = reinterpret_cast<const xcb_xkb_state_notify_event_t &>(event);
        if (change.xkbType != XCB_XKB_STATE_NOTIFY) {
            return;
        }
        const auto modifiers = monitors_.modifierChange(change);
        if (modifiers && InputRouter::modifierChange(focus()) == InputRecipient::globalMonitors) {
            monitors_.sendToGlobal(*modifiers);
        }
    }
}

void X11Input::handleInput(const xcb_ge_generic_event_t &event) {
    switch (event.event_type) {
    case XCB_INPUT_RAW_KEY_PRESS:
        handleRawPress(reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event));
        break;
    case XCB_INPUT_RAW_MOTION: {
        const auto motion =
            monitors_.motion(reinterpret_cast<const xcb_input_raw_motion_event_t &>(event));
        if (motion && InputRouter::motion(focus()) == InputRecipient::globalMonitors) {
            monitors_.sendToGlobal(*motion);
        }
        break;
    }
    default:
        monitors_.handle(event);
        ownInput_->handle(event);
        break;
    }
}

void X11Input::handleRawPress(const xcb_input_raw_key_press_event_t &event) {
    const auto keycode = static_cast<xcb_keycode_t>(event.detail);
    hotKeys_.notePhysicalPress(keycode, event.full_sequence);
    const auto route =
        router_.press({.source = KeySource::raw, .keycode = keycode, .time = event.time}, focus());
    const auto key = monitors_.keyDown(event);
    if (key && route.recipient == InputRecipient::globalMonitors) {
        monitors_.sendToGlobal(*key);
    }
}

// True when the press goes no further.
bool X11Input::handlePress(KeySource source, const xcb_key_press_event_t &event) {
    const KeyStroke press{.source = source,
                          .keycode = event.detail,
                          .time = event.time,
                          .isHotKey = hotKeys_.isHotKey(event.detail, event.state)};
    const auto route = router_.press(press, focus());
    if (route.asksLocalMonitors) {
        const auto key = monitors_.keyDown(event);
        if (key && monitors_.sendToLocal(*key)) {
            router_.noteSwallowed(press);
            return true;
        }
    }
    if (route.recipient == InputRecipient::hotKey) {
        hotKeys_.press(event.detail, event.state);
    }
    return route.recipient != InputRecipient::toolkit;
}

void X11Input::handleRelease(KeySource source, const xcb_key_release_event_t &event) {
    router_.release({.source = source, .keycode = event.detail, .time = event.time});
    hotKeys_.release(event.detail);
}

bool X11Input::handleToolkitEvent(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7fU) {
    case XCB_KEY_PRESS:
        return handlePress(KeySource::toolkit,
                           reinterpret_cast<const xcb_key_press_event_t &>(event));
    case XCB_KEY_RELEASE:
        handleRelease(KeySource::toolkit, reinterpret_cast<const xcb_key_release_event_t &>(event));
        return false;
    case XCB_FOCUS_OUT:
        router_.toolkitLostKeyboard();
        [[fallthrough]];
    case XCB_FOCUS_IN:
        if (ownInput_) {
            ownInput_->handleToolkitFocus(reinterpret_cast<const xcb_focus_in_event_t &>(event));
        }
        return false;
    default:
        return false;
    }
}

} // namespace lumo::x11
