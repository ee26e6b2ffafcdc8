#include "platform/x11/X11HotKeys.h"

#include "platform/x11/Connection.h"
#include "platform/x11/KeyPositions.h"

#include <algorithm>
#include <utility>

// The header uses a C++ keyword as a field's name.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace lumo::x11 {

namespace {

// From X11/keysymdef.h.
constexpr xcb_keysym_t numLockKeysym = 0xff7f;
constexpr xcb_keysym_t scrollLockKeysym = 0xff14;
constexpr xcb_keysym_t altLeftKeysym = 0xffe9;
constexpr xcb_keysym_t altRightKeysym = 0xffea;
constexpr xcb_keysym_t superLeftKeysym = 0xffeb;
constexpr xcb_keysym_t superRightKeysym = 0xffec;

} // namespace

X11HotKeys::X11HotKeys(Connection &connection)
    : connection_(connection) {
    makeAutoRepeatDetectable();
    readModifierBits();
    connectionEvents_ =
        connection_.onEvent([this](const xcb_generic_event_t &event) { handleEvent(event); });
}

X11HotKeys::~X11HotKeys() {
    for (auto &hotKey : hotKeys_) {
        ungrab(hotKey);
    }
}

void X11HotKeys::makeAutoRepeatDetectable() {
    const auto *extension = xcb_get_extension_data(connection_, &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0 ||
        !connection_.wait(xcb_xkb_use_extension(connection_, 1, 0), xcb_xkb_use_extension_reply)) {
        return;
    }
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    connection_.wait(
        xcb_xkb_per_client_flags(connection_, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0),
        xcb_xkb_per_client_flags_reply);
}

void X11HotKeys::readModifierBits() {
    const auto first = connection_.setup().min_keycode;
    const auto count = static_cast<std::uint8_t>(connection_.setup().max_keycode - first + 1);
    const auto modifiersCookie = xcb_get_modifier_mapping(connection_);
    const auto keysymsCookie = xcb_get_keyboard_mapping(connection_, first, count);
    const auto modifiers = connection_.wait(modifiersCookie, xcb_get_modifier_mapping_reply);
    const auto keysyms = connection_.wait(keysymsCookie, xcb_get_keyboard_mapping_reply);
    bits_ = {};
    if (!modifiers || !keysyms) {
        return;
    }
    const auto *allKeysyms = xcb_get_keyboard_mapping_keysyms(keysyms.get());
    const auto *keycodes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const int keysPerModifier = modifiers->keycodes_per_modifier;
    for (int index = 0; index < 8 * keysPerModifier; ++index) {
        if (keycodes[index] < first) {
            continue;
        }
        const auto bit =
            static_cast<std::uint16_t>(1U << static_cast<unsigned>(index / keysPerModifier));
        for (int column = 0; column < keysyms->keysyms_per_keycode; ++column) {
            switch (allKeysyms[(keycodes[index] - first) * keysyms->keysyms_per_keycode + column]) {
            case superLeftKeysym:
            case superRightKeysym:
                bits_.command |= bit;
                break;
            case altLeftKeysym:
            case altRightKeysym:
                bits_.option |= bit;
                break;
            case numLockKeysym:
                bits_.numLock |= bit;
                break;
            case scrollLockKeysym:
                bits_.scrollLock |= bit;
                break;
            default:
                break;
            }
        }
    }
}

std::optional<std::uint16_t> X11HotKeys::stateOf(std::uint32_t modifiers) const {
    const std::array<std::pair<std::uint32_t, std::uint16_t>, 4> table = {{
        {hotKeyModifier::command, bits_.command},
        {hotKeyModifier::option, bits_.option},
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

std::vector<std::uint16_t> X11HotKeys::lockStates() const {
    std::vector<std::uint16_t> states = {0};
    for (const std::uint16_t lock :
         {std::uint16_t{XCB_MOD_MASK_LOCK}, bits_.numLock, bits_.scrollLock}) {
        if (lock != 0) {
            const auto count = states.size();
            for (std::size_t index = 0; index < count; ++index) {
                states.push_back(static_cast<std::uint16_t>(states[index] | lock));
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
    const auto keycode = keycodeOfVirtualKey(keyCode);
    if (!keycode) {
        return {hotKeyStatus::invalidParameter, {}};
    }
    hotKeys_.push_back({modifiers, id, *keycode});
    const auto added = std::prev(hotKeys_.end());
    const auto status = grab(*added);
    if (status != hotKeyStatus::success) {
        hotKeys_.erase(added);
        return {status, {}};
    }
    return {status, Handle(lifetime_.guard([this, added] { unregister(added); }))};
}

std::int32_t X11HotKeys::grab(HotKey &hotKey) {
    const auto state = stateOf(hotKey.modifiers);
    if (!state) {
        return hotKeyStatus::invalidParameter;
    }
    hotKey.state = *state;
    std::vector<xcb_void_cookie_t> cookies;
    for (const auto lockState : lockStates()) {
        hotKey.grabbedStates.push_back(static_cast<std::uint16_t>(*state | lockState));
        cookies.push_back(xcb_grab_key_checked(connection_, 1, connection_.root(),
                                               hotKey.grabbedStates.back(), hotKey.keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool taken = false;
    for (const auto cookie : cookies) {
        taken |= XcbPointer<xcb_generic_error_t>(xcb_request_check(connection_, cookie)) != nullptr;
    }
    if (taken) {
        ungrab(hotKey);
        return hotKeyStatus::alreadyTaken;
    }
    return hotKeyStatus::success;
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
    const auto before = bits_;
    readModifierBits();
    if (bits_ == before) {
        return;
    }
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { ungrab(hotKey); });
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { grab(hotKey); });
}

void X11HotKeys::handleEvent(const xcb_generic_event_t &event) {
    switch (event.response_type & 0x7fU) {
    case XCB_KEY_PRESS:
        handleKeyPress(reinterpret_cast<const xcb_key_press_event_t &>(event));
        break;
    case XCB_KEY_RELEASE:
        handleKeyRelease(reinterpret_cast<const xcb_key_release_event_t &>(event));
        break;
    case XCB_MAPPING_NOTIFY:
        if (reinterpret_cast<const xcb_mapping_notify_event_t &>(event).request !=
            XCB_MAPPING_POINTER) {
            grabAllAnew();
        }
        break;
    default:
        break;
    }
}

void X11HotKeys::handleKeyPress(const xcb_key_press_event_t &event) {
    const auto locks =
        static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK | bits_.numLock | bits_.scrollLock);
    const auto state = static_cast<std::uint16_t>(event.state & 0xffU & ~locks);
    const auto pressed = std::ranges::find_if(hotKeys_, [&](const HotKey &hotKey) {
        return hotKey.keycode == event.detail && hotKey.state == state;
    });
    if (pressed != hotKeys_.end()) {
        pressed->isDown = true;
        events_.emit({pressed->id, hotKeyEventKind::pressed});
    }
}

void X11HotKeys::handleKeyRelease(const xcb_key_release_event_t &event) {
    // While a grab is active the modifiers' own releases arrive as well, and the state may have
    // changed: the key alone counts.
    std::vector<HotKeyID> released;
    for (auto &hotKey : hotKeys_) {
        if (hotKey.keycode == event.detail && std::exchange(hotKey.isDown, false)) {
            released.push_back(hotKey.id);
        }
    }
    for (const auto &id : released) {
        events_.emit({id, hotKeyEventKind::released});
    }
}

} // namespace lumo::x11
