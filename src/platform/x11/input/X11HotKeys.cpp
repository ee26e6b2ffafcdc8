#include "platform/x11/input/X11HotKeys.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/XcbXkb.h"
#include "support/Log.h"

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
        return {HotKeyStatus::invalidParameter, {}};
    }
    const auto keysDown = xcb_query_keymap(connection_);
    hotKeys_.push_back({modifiers, id, *keycode});
    const auto added = std::prev(hotKeys_.end());
    const auto status = grabAndWait(*added);
    if (status != HotKeyStatus::success) {
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

HotKeyStatus X11HotKeys::prepareGrabs(HotKey &hotKey) {
    const auto state = stateOf(hotKey.modifiers);
    if (!state) {
        return HotKeyStatus::invalidParameter;
    }
    hotKey.grabbedStates = grabStates(*state);
    hotKey.grabSerial = ++lastGrabSerial_;
    return HotKeyStatus::success;
}

xcb_void_cookie_t X11HotKeys::grab(const HotKey &hotKey, std::uint16_t state) {
    return xcb_grab_key_checked(connection_, 1, connection_.root(), state, hotKey.keycode,
                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
}

HotKeyStatus X11HotKeys::grabAndWait(HotKey &hotKey) {
    if (const auto status = prepareGrabs(hotKey); status != HotKeyStatus::success) {
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
        return HotKeyStatus::alreadyTaken;
    }
    return HotKeyStatus::success;
}

void X11HotKeys::grabWithoutWaiting(HotKey &hotKey) {
    if (const auto status = prepareGrabs(hotKey); status != HotKeyStatus::success) {
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
        reportLoss(HotKeyStatus::alreadyTaken);
    }
}

void X11HotKeys::reportLoss(HotKeyStatus status) const {
    log_.print("[Lumo] hotkey lost when the keyboard changed, " + describe(status));
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
        events_.emit({id, HotKeyEventKind::released});
    }
}

void X11HotKeys::grabAllAnew() {
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { ungrab(hotKey); });
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { grabWithoutWaiting(hotKey); });
}

bool X11HotKeys::HotKey::isPressedBy(xcb_keycode_t key, std::uint16_t state) const {
    const auto modifierBits = static_cast<std::uint16_t>(state & 0xffU); // without the buttons
    return key == keycode && std::ranges::find(grabbedStates, modifierBits) != grabbedStates.end();
}

bool X11HotKeys::isHotKey(xcb_keycode_t keycode, std::uint16_t state) const {
    return std::ranges::any_of(
        hotKeys_, [&](const HotKey &hotKey) { return hotKey.isPressedBy(keycode, state); });
}

void X11HotKeys::press(xcb_keycode_t keycode, std::uint16_t state) {
    const auto pressed = std::ranges::find_if(
        hotKeys_, [&](const HotKey &hotKey) { return hotKey.isPressedBy(keycode, state); });
    if (pressed != hotKeys_.end() && !pressed->heldAtRequest) {
        pressed->isDown = true;
        events_.emit({pressed->id, HotKeyEventKind::pressed});
    }
}

void X11HotKeys::release(xcb_keycode_t keycode) {
    // While a grab is active the modifiers' own releases arrive as well, and the state may have
    // changed: the key alone counts.
    std::vector<HotKeyID> released;
    for (auto &hotKey : hotKeys_) {
        if (hotKey.keycode != keycode) {
            continue;
        }
        hotKey.heldAtRequest.reset();
        if (std::exchange(hotKey.isDown, false)) {
            released.push_back(hotKey.id);
        }
    }
    for (const auto &id : released) {
        events_.emit({id, HotKeyEventKind::released});
    }
}

void X11HotKeys::notePhysicalPress(xcb_keycode_t keycode, std::uint32_t sequence) {
    for (auto &hotKey : hotKeys_) {
        if (hotKey.keycode == keycode && hotKey.heldAtRequest &&
            static_cast<std::int32_t>(sequence - *hotKey.heldAtRequest) >= 0) {
            hotKey.heldAtRequest.reset();
        }
    }
}

} // namespace lumo::x11
