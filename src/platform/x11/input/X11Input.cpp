#include "platform/x11/input/X11Input.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <utility>

namespace lumo::x11 {

X11Input::X11Input(Connection &connection, WindowMirror &mirror, const X11Screens &screens,
                   std::function<bool()> isActive, freedesktop::GlibMainLoop &mainLoop,
                   const Log &log)
    : isActive_(std::move(isActive))
    , modifiers_(connection)
    , keyboard_(connection, modifiers_)
    , monitors_(mainLoop, connection, modifiers_, screens,
                [this](const InputEvent &motion) {
                    if (InputRouter::motion(focus()) == InputRecipient::globalMonitors) {
                        monitors_.sendToGlobal(motion);
                    }
                })
    , hotKeys_(connection, modifiers_, mainLoop, log)
    , router_(connection.extensions().xkb) {
    if (connection.extensions().xinput) {
        ownInput_.emplace(connection, mirror);
    }
    events_ = subscribe(connection.events());
}

InputFocus X11Input::focus() const {
    auto focus = ownInput_ ? ownInput_->focus() : InputFocus{};
    focus.isActive = isActive_();
    return focus;
}

std::array<Handle, 4> X11Input::subscribe(EventRouter &events) {
    return {events.on(event::keyPress,
                      [this](const auto &press) { handlePress(KeySource::grab, press); }),
            events.on(event::keyRelease,
                      [this](const auto &release) { handleRelease(KeySource::grab, release); }),
            events.on(event::rawKeyPress, [this](const auto &press) { handleRawPress(press); }),
            events.on(event::keyboardStateNotify, [this](const auto &change) {
                const auto modifiers = monitors_.modifierChange(change);
                if (modifiers &&
                    InputRouter::modifierChange(focus()) == InputRecipient::globalMonitors) {
                    monitors_.sendToGlobal(*modifiers);
                }
            })};
}

void X11Input::handleRawPress(const xcb_input_raw_key_press_event_t &event) {
    const auto keycode = static_cast<xcb_keycode_t>(event.detail);
    hotKeys_.notePhysicalPress(keycode);
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
