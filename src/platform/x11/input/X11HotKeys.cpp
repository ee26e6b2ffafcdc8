#include "platform/x11/input/X11HotKeys.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/XcbXkb.h"
#include "support/Log.h"

#include <xcb/xinput.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace lumo::x11 {

namespace {

bool isKeyDown(const xcb_query_keymap_reply_t &keys, xcb_keycode_t keycode) {
    return (keys.keys[keycode / 8U] >> (keycode % 8U) & 1U) != 0;
}

} // namespace

X11HotKeys::X11HotKeys(Connection &connection, KeyboardModifiers &modifiers, const Log &log)
    : connection_(connection)
    , modifiers_(modifiers)
    , log_(log) {
    makeAutoRepeatDetectable();
    modifierChanges_ = modifiers.onChange([this] { grabAllAnew(); });
    connectionEvents_ =
        connection_.onEvent([this](const xcb_generic_event_t &event) { handleEvent(event); });
}

X11HotKeys::~X11HotKeys() {
    for (auto &hotKey : hotKeys_) {
        ungrab(hotKey);
    }
}

void X11HotKeys::makeAutoRepeatDetectable() {
    if (!connection_.extensions().xkb) {
        return;
    }
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    xcb_discard_reply(connection_, xcb_xkb_per_client_flags(connection_, XCB_XKB_ID_USE_CORE_KBD,
                                                            flag, flag, 0, 0, 0)
                                       .sequence);
}

std::optional<std::uint16_t> X11HotKeys::stateOf(std::uint32_t modifiers) const {
    const auto &bits = modifiers_.bits();
    const std::array<std::pair<std::uint32_t, std::uint16_t>, 4> table = {{
        {hotKeyModifier::command, bits.command},
        {hotKeyModifier::option, bits.option},
        {hotKeyModifier::control, XCB_MOD_MASK_CONTROL},
        {hotKeyModifier::shift, XCB_MOD_MASK_SHIFT},
    }};
    std::uint16_t state = 0;
    for (const auto &[modifier, bit] : table) {
        if ((modifiers & modifier) == 0) {
            continue;
        }
        if (bit == 0) {
            return std::nullopt;
        }
        state |= bit;
    }
    return state;
}

std::vector<std::uint16_t> X11HotKeys::grabStates(std::uint16_t state) const {
    std::vector<std::uint16_t> states = {state};
    const auto &bits = modifiers_.bits();
    for (const std::uint16_t lock :
         {std::uint16_t{XCB_MOD_MASK_LOCK}, bits.numLock, bits.scrollLock}) {
        const auto count = states.size();
        for (std::size_t index = 0; index < count; ++index) {
            const auto locked = static_cast<std::uint16_t>(states[index] | lock);
            if (locked != states[index]) {
                states.push_back(locked);
            }
        }
    }
    return states;
}

Handle X11HotKeys::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    return events_.subscribe(std::move(handler));
}

HotKeyRegistration X11HotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              HotKeyID id) {
    const auto keycode = freedesktop::keycodeOfVirtualKey(keyCode);
    if (!keycode) {
        return {hotKeyStatus::invalidParameter, {}};
    }
    const auto keysDown = xcb_query_keymap(connection_);
    hotKeys_.push_back({modifiers, id, *keycode});
    const auto added = std::prev(hotKeys_.end());
    const auto status = grabAndWait(*added);
    if (status != hotKeyStatus::success) {
        hotKeys_.erase(added);
        xcb_discard_reply(connection_, keysDown.sequence);
        return {status, {}};
    }
    const XcbPointer<xcb_query_keymap_reply_t> keys(
        xcb_query_keymap_reply(connection_, keysDown, nullptr));
    if (keys != nullptr && isKeyDown(*keys, *keycode)) {
        added->heldAtRequest = keysDown.sequence;
    }
    return {status, Handle(lifetime_.guard([this, added] { unregister(added); }))};
}

std::int32_t X11HotKeys::prepareGrabs(HotKey &hotKey) {
    const auto state = stateOf(hotKey.modifiers);
    if (!state) {
        return hotKeyStatus::invalidParameter;
    }
    hotKey.grabbedStates = grabStates(*state);
    hotKey.grabSerial = ++lastGrabSerial_;
    return hotKeyStatus::success;
}

xcb_void_cookie_t X11HotKeys::grab(const HotKey &hotKey, std::uint16_t state) {
    return xcb_grab_key_checked(connection_, 1, connection_.root(), state, hotKey.keycode,
                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
}

std::int32_t X11HotKeys::grabAndWait(HotKey &hotKey) {
    if (const auto status = prepareGrabs(hotKey); status != hotKeyStatus::success) {
        return status;
    }
    std::vector<xcb_void_cookie_t> cookies;
    for (const auto state : hotKey.grabbedStates) {
        cookies.push_back(grab(hotKey, state));
    }
    bool isTaken = false;
    for (const auto cookie : cookies) {
        isTaken |=
            XcbPointer<xcb_generic_error_t>(xcb_request_check(connection_, cookie)) != nullptr;
    }
    if (isTaken) {
        ungrab(hotKey);
        return hotKeyStatus::alreadyTaken;
    }
    return hotKeyStatus::success;
}

void X11HotKeys::grabWithoutWaiting(HotKey &hotKey) {
    if (const auto status = prepareGrabs(hotKey); status != hotKeyStatus::success) {
        reportLoss(status);
        return;
    }
    for (const auto state : hotKey.grabbedStates) {
        connection_.whenHandled(grab(hotKey, state),
                                lifetime_.guard([this, serial = hotKey.grabSerial](bool succeeded) {
                                    if (!succeeded) {
                                        giveUp(serial);
                                    }
                                }));
    }
}

// Several grabs of one hot key may fail; only the first failure finds it grabbed.
void X11HotKeys::giveUp(std::uint64_t grabSerial) {
    const auto lost = std::ranges::find(hotKeys_, grabSerial, &HotKey::grabSerial);
    if (lost != hotKeys_.end() && !lost->grabbedStates.empty()) {
        ungrab(*lost);
        reportLoss(hotKeyStatus::alreadyTaken);
    }
}

void X11HotKeys::reportLoss(std::int32_t status) const {
    log_.print("[Lumo] hotkey lost when the keyboard changed, status=" + std::to_string(status));
}

void X11HotKeys::ungrab(HotKey &hotKey) {
    for (const auto state : std::exchange(hotKey.grabbedStates, {})) {
        xcb_ungrab_key(connection_, hotKey.keycode, connection_.root(), state);
    }
}

void X11HotKeys::unregister(std::list<HotKey>::iterator hotKey) {
    const auto id = hotKey->id;
    const bool wasDown = hotKey->isDown;
    ungrab(*hotKey);
    hotKeys_.erase(hotKey);
    if (wasDown) {
        events_.emit({id, hotKeyEventKind::released});
    }
}

void X11HotKeys::grabAllAnew() {
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { ungrab(hotKey); });
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { grabWithoutWaiting(hotKey); });
}

void X11HotKeys::handleEvent(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7fU) {
    case XCB_GE_GENERIC: {
        // Asked for by the monitor of the emergency keys.
        const auto &raw = reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event);
        const auto &extensions = connection_.extensions();
        if (extensions.xinput && raw.extension == extensions.xinputOpcode &&
            raw.event_type == XCB_INPUT_RAW_KEY_PRESS) {
            handlePhysicalPress(raw.detail, event.full_sequence);
        }
        break;
    }
    case XCB_KEY_PRESS:
        if (!takesFirst || !takesFirst(event)) {
            handleKeyPress(reinterpret_cast<const xcb_key_press_event_t &>(event));
        }
        break;
    case XCB_KEY_RELEASE:
        handleKeyRelease(reinterpret_cast<const xcb_key_release_event_t &>(event));
        break;
    default:
        break;
    }
}

// Auto-repeat makes key presses, but no raw ones.
void X11HotKeys::handlePhysicalPress(std::uint32_t keycode, std::uint32_t sequence) {
    for (auto &hotKey : hotKeys_) {
        if (hotKey.keycode == keycode && hotKey.heldAtRequest &&
            static_cast<std::int32_t>(sequence - *hotKey.heldAtRequest) >= 0) {
            hotKey.heldAtRequest.reset();
        }
    }
}

bool X11HotKeys::handleLocal(const xcb_generic_event_t &event) {
    const auto type = event.response_type & 0x7fU;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE) {
        return false;
    }
    const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(event);
    const std::pair keyAndTime(key.detail, key.time);
    if (type == XCB_KEY_RELEASE) {
        lastLocalRelease_ = keyAndTime;
        handleKeyRelease(key);
        return false;
    }
    if (pressedHotKey(key) == hotKeys_.end()) {
        return false;
    }
    // There, auto-repeat also makes a release, at the same time as the press.
    if (keyAndTime != lastLocalRelease_) {
        handleKeyPress(key);
    }
    return true;
}

std::list<X11HotKeys::HotKey>::iterator
X11HotKeys::pressedHotKey(const xcb_key_press_event_t &event) {
    const auto state = static_cast<std::uint16_t>(event.state & 0xffU);
    return std::ranges::find_if(hotKeys_, [&](const HotKey &hotKey) {
        return hotKey.keycode == event.detail &&
               std::ranges::find(hotKey.grabbedStates, state) != hotKey.grabbedStates.end();
    });
}

void X11HotKeys::handleKeyPress(const xcb_key_press_event_t &event) {
    const auto pressed = pressedHotKey(event);
    if (pressed != hotKeys_.end() && !pressed->heldAtRequest) {
        pressed->isDown = true;
        events_.emit({pressed->id, hotKeyEventKind::pressed});
    }
}

void X11HotKeys::handleKeyRelease(const xcb_key_release_event_t &event) {
    // While a grab is active the modifiers' own releases arrive as well, and the state may have
    // changed: the key alone counts.
    std::vector<HotKeyID> released;
    for (auto &hotKey : hotKeys_) {
        if (hotKey.keycode != event.detail) {
            continue;
        }
        hotKey.heldAtRequest.reset();
        if (std::exchange(hotKey.isDown, false)) {
            released.push_back(hotKey.id);
        }
    }
    for (const auto &id : released) {
        events_.emit({id, hotKeyEventKind::released});
    }
}

} // namespace lumo::x11
