#include "platform/x11/input/X11EventMonitors.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/X11Screens.h"

#include <memory>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t rawKeys = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS;
constexpr std::uint32_t rawButtons =
    XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
constexpr std::uint32_t deviceChanges =
    XCB_INPUT_XI_EVENT_MASK_HIERARCHY | XCB_INPUT_XI_EVENT_MASK_DEVICE_CHANGED;

constexpr std::uint32_t leftButton = 1;
constexpr std::uint32_t rightButton = 3;
// The four between are the wheels, which are turned and not held.
constexpr std::uint32_t firstExtraButton = 8;
constexpr std::uint32_t lastButton = 31;

bool canBeHeld(std::uint32_t button) {
    return (button >= leftButton && button <= rightButton) ||
           (button >= firstExtraButton && button <= lastButton);
}

// Absent for a modifier key, which only changes the flags, and for a key without a virtual key
// code.
std::optional<InputEvent> keyDownEvent(std::uint32_t keycode, std::uint32_t modifierFlags) {
    constexpr std::uint16_t firstModifierKey = 54; // right Command
    constexpr std::uint16_t lastModifierKey = 63;  // Fn
    const auto key = freedesktop::virtualKeyOfKeycode(keycode);
    if (!key || (*key >= firstModifierKey && *key <= lastModifierKey)) {
        return std::nullopt;
    }
    return InputEvent{.type = EventType::keyDown, .modifierFlags = modifierFlags, .keyCode = *key};
}

} // namespace

X11EventMonitors::X11EventMonitors(freedesktop::GlibMainLoop &loop, Connection &connection,
                                   const KeyboardModifiers &modifiers, const X11Screens &screens,
                                   std::function<void(const InputEvent &)> moved)
    : connection_(connection)
    , modifiers_(modifiers)
    , screens_(screens)
    , moved_(std::move(moved)) {
    if (connection.extensions().xinput) {
        devices_.emplace(connection);
        motion_.emplace(
            loop, connection,
            [this](const auto &raw) {
                const auto part = devices_->movement(raw);
                movement_ = {movement_.x + part.x, movement_.y + part.y};
            },
            [this] { finishMotion(); });
        events_ = subscribe(connection.events());
    }
    if (connection.extensions().xkb) {
        watchKeyboardState();
    }
}

bool X11EventMonitors::canMonitorKeys() const {
    return connection_.extensions().xinput && connection_.extensions().xkb;
}

void X11EventMonitors::watchKeyboardState() {
    xcb_xkb_select_events_details_t details{};
    details.affectState = XCB_XKB_STATE_PART_MODIFIER_STATE;
    details.stateDetails = XCB_XKB_STATE_PART_MODIFIER_STATE;
    xcb_xkb_select_events_aux(connection_, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_STATE_NOTIFY,
                              0, 0, 0, 0, &details);
    connection_.whenReplied<xcb_xkb_get_state_reply_t>(
        xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD),
        lifetime_.guard([this](const xcb_xkb_get_state_reply_t *reply) {
            if (reply != nullptr) {
                keyboardState_ = reply->mods;
            }
        }));
}

Handle X11EventMonitors::addGlobalMonitor(EventMask mask,
                                          std::function<void(const InputEvent &)> handler) {
    const auto count = [this, mask](int by) {
        for (unsigned type = 0; type < wanted_.size(); ++type) {
            if ((mask >> type & 1U) != 0) {
                wanted_[type] += by;
            }
        }
        selectEvents();
    };
    count(1);
    auto subscription =
        global_.subscribe([mask, handler = std::move(handler)](const InputEvent &event) {
            if ((mask & eventMask(event.type)) != 0) {
                handler(event);
            }
        });
    // Shared, as a function can't own what can't be copied.
    auto held = std::make_shared<Handle>(std::move(subscription));
    return Handle(lifetime_.guard([held, count] {
        held->reset();
        count(-1);
    }));
}

Handle
X11EventMonitors::addButtonMonitor(std::function<void(std::uint32_t, bool isDown)> observer) {
    if (!devices_) {
        return {};
    }
    ++wantedButtons_;
    selectEvents();
    auto held = std::make_shared<Handle>(buttons_.subscribe(std::move(observer)));
    return Handle(lifetime_.guard([this, held] {
        held->reset();
        --wantedButtons_;
        selectEvents();
    }));
}

Handle X11EventMonitors::addLocalMonitor(EventMask mask,
                                         std::function<bool(const InputEvent &)> handler) {
    return local_.subscribe([mask, handler = std::move(handler)](const LocalEvent &local) {
        if (!*local.isSwallowed && (mask & eventMask(local.event->type)) != 0) {
            *local.isSwallowed = handler(*local.event);
        }
    });
}

void X11EventMonitors::selectEvents() {
    if (!devices_) {
        return;
    }
    const auto wants = [this](EventMask mask) {
        for (unsigned type = 0; type < wanted_.size(); ++type) {
            if ((mask >> type & 1U) != 0 && wanted_[type] > 0) {
                return true;
            }
        }
        return false;
    };
    const bool wantsMotion = wants(pointerMotionMask);
    const auto wanted = (wants(eventMask(EventType::keyDown)) ? rawKeys : 0U) |
                        (wantsMotion || wantedButtons_ > 0 ? rawButtons : 0U);
    const bool hadMotion = std::exchange(hasMotion_, wantsMotion);
    if (std::exchange(selected_, wanted) == wanted && hadMotion == wantsMotion) {
        return;
    }
    struct {
        xcb_input_event_mask_t allHead;
        std::uint32_t all;
        xcb_input_event_mask_t mastersHead;
        std::uint32_t masters;
    } const selection{{XCB_INPUT_DEVICE_ALL, 1},
                      wantsMotion ? deviceChanges : 0U,
                      // From the devices themselves each event would come a second time.
                      {XCB_INPUT_DEVICE_ALL_MASTER, 1},
                      wanted};
    xcb_input_xi_select_events(connection_, connection_.root(), 2, &selection.allHead);
    if (hadMotion != wantsMotion) {
        motion_->setEnabled(wantsMotion);
    }
    if (!hadMotion && wantsMotion) {
        buttonsDown_ = 0;
        devices_->read();
    }
}

std::array<Handle, 4> X11EventMonitors::subscribe(EventRouter &events) {
    return {events.on(event::rawButtonPress,
                      [this](const auto &raw) {
                          readMotion(); // which came before it
                          buttonsDown_ |= canBeHeld(raw.detail) ? 1U << raw.detail : 0U;
                          buttons_.emit(raw.detail, true);
                      }),
            events.on(event::rawButtonRelease,
                      [this](const auto &raw) {
                          readMotion();
                          buttonsDown_ &= canBeHeld(raw.detail) ? ~(1U << raw.detail) : ~0U;
                          buttons_.emit(raw.detail, false);
                      }),
            events.on(event::hierarchy, [this](const auto &) { devices_->read(); }),
            events.on(event::deviceChanged, [this](const auto &change) {
                // A master that follows another of its devices is no news.
                if (change.reason == XCB_INPUT_CHANGE_REASON_DEVICE_CHANGE) {
                    devices_->read();
                }
            })};
}

std::optional<InputEvent>
X11EventMonitors::keyDown(const xcb_input_raw_key_press_event_t &event) const {
    return keyDownEvent(event.detail, modifiers_.flagsOf(keyboardState_));
}

std::optional<InputEvent> X11EventMonitors::keyDown(const xcb_key_press_event_t &event) const {
    return keyDownEvent(event.detail, modifiers_.flagsOf(event.state));
}

void X11EventMonitors::readMotion() {
    if (motion_) {
        motion_->readNow();
    }
}

void X11EventMonitors::finishMotion() {
    const auto movement = std::exchange(movement_, {});
    if (movement.x == 0 && movement.y == 0) {
        return;
    }
    const double scale = screens_.pointSpace().scale();
    moved_({.type = motionType(),
            .modifierFlags = modifiers_.flagsOf(keyboardState_),
            .deltaX = movement.x / scale,
            .deltaY = movement.y / scale});
    if (!connection_.extensions().xkb) {
        readKeyboardState();
    }
}

void X11EventMonitors::readKeyboardState() {
    connection_.whenReplied<xcb_query_pointer_reply_t>(
        xcb_query_pointer(connection_, connection_.root()),
        lifetime_.guard([this](const xcb_query_pointer_reply_t *reply) {
            if (reply != nullptr) {
                keyboardState_ = static_cast<std::uint8_t>(reply->mask); // without the buttons
            }
        }));
    connection_.flush();
}

EventType X11EventMonitors::motionType() const {
    if (buttonsDown_ == 0) {
        return EventType::mouseMoved;
    }
    if ((buttonsDown_ & (1U << leftButton)) != 0) {
        return EventType::leftMouseDragged;
    }
    return (buttonsDown_ & (1U << rightButton)) != 0 ? EventType::rightMouseDragged
                                                     : EventType::otherMouseDragged;
}

std::optional<InputEvent>
X11EventMonitors::modifierChange(const xcb_xkb_state_notify_event_t &event) {
    readMotion();
    const auto before = modifiers_.flagsOf(std::exchange(keyboardState_, event.mods));
    const auto flags = modifiers_.flagsOf(event.mods);
    if (flags == before) {
        return std::nullopt;
    }
    return InputEvent{.type = EventType::flagsChanged,
                      .modifierFlags = flags,
                      .keyCode = freedesktop::virtualKeyOfKeycode(event.keycode).value_or(0)};
}

bool X11EventMonitors::sendToLocal(const InputEvent &event) const {
    bool isSwallowed = false;
    local_.emit({&event, &isSwallowed});
    return isSwallowed;
}

} // namespace lumo::x11
