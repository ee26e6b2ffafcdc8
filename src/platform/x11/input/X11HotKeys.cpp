#include "platform/x11/input/X11HotKeys.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/XcbXkb.h"
#include "support/Log.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr double pauseBeforeRetry = 0.5;   // seconds: windows come and go in numbers
constexpr double pauseBetweenLooks = 0.05; // seconds: less than between two presses of a key

bool isKeyDown(const xcb_query_keymap_reply_t &keys, xcb_keycode_t keycode) {
    return (keys.keys[keycode / 8U] >> (keycode % 8U) & 1U) != 0;
}

} // namespace

X11HotKeys::X11HotKeys(Connection &connection, KeyboardModifiers &modifiers, MainLoop &mainLoop,
                       const Log &log)
    : connection_(connection)
    , modifiers_(modifiers)
    , mainLoop_(mainLoop)
    , log_(log) {
    makeAutoRepeatDetectable();
    modifierChanges_ = modifiers.onChange([this] { grabAllAnew(); });
    destroyedWindows_ = connection.events().on(
        event::destroyNotify,
        [this](const xcb_destroy_notify_event_t & /*event*/) { scheduleRetry(); });
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

Handle X11HotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                  std::function<void(HotKeyStatus)> outcome) {
    const auto keycode = freedesktop::keycodeOfVirtualKey(keyCode);
    const auto state = stateOf(modifiers_.bits(), modifiers);
    if (!keycode || !state) {
        outcome(HotKeyStatus::invalidParameter);
        return {};
    }
    // The server lets one client have the same grab twice, and masks may differ in bits that no
    // key sets.
    if (isHotKey(*keycode, *state)) {
        outcome(HotKeyStatus::alreadyTaken);
        return {};
    }
    auto &hotKey = hotKeys_.emplace_back();
    hotKey.modifiers = modifiers;
    hotKey.id = id;
    hotKey.keycode = *keycode;
    hotKey.outcome = std::move(outcome);
    readWhetherHeld(hotKey);
    grab(hotKey, *state);
    connection_.flush(); // a shortcut works before the settings file tells of it
    return Handle(hotKey.lifetime.guard([this, &hotKey] { unregister(hotKey); }));
}

void X11HotKeys::readWhetherHeld(HotKey &hotKey) {
    connection_.whenReplied<xcb_query_keymap_reply_t>(
        xcb_query_keymap(connection_),
        hotKey.lifetime.guard([this, &hotKey](const xcb_query_keymap_reply_t *keys) {
            // The toolkit's connection may have told of the release before this reply was read.
            if (hotKey.earlierPress == EarlierPress::released) {
                return;
            }
            const bool isHeld = keys != nullptr && isKeyDown(*keys, hotKey.keycode);
            hotKey.earlierPress = isHeld ? EarlierPress::held : EarlierPress::released;
            if (isHeld) {
                hotKey.nextLook = mainLoop_.after(pauseBetweenLooks,
                                                  [this, &hotKey] { readWhetherHeld(hotKey); });
            }
        }));
    connection_.flush();
}

void X11HotKeys::grab(HotKey &hotKey, std::uint16_t state) {
    hotKey.grabbedStates = grabStates(state);
    hotKey.grabsInFlight = hotKey.grabbedStates.size();
    const auto &replies = hotKey.grabReplies.emplace();
    for (const auto grabbed : hotKey.grabbedStates) {
        connection_.whenHandled(
            xcb_grab_key_checked(connection_, 1, connection_.root(), grabbed, hotKey.keycode,
                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
            replies.guard([this, &hotKey](bool succeeded) { handleGrabReply(hotKey, succeeded); }));
    }
}

void X11HotKeys::handleGrabReply(HotKey &hotKey, bool succeeded) {
    if (!succeeded) {
        giveUp(hotKey, HotKeyStatus::alreadyTaken);
    } else if (--hotKey.grabsInFlight == 0) {
        setStatus(hotKey, HotKeyStatus::success);
    }
}

void X11HotKeys::giveUp(HotKey &hotKey, HotKeyStatus status) {
    ungrab(hotKey);
    if (hotKey.status == HotKeyStatus::success) {
        log_.print("[Lumo] hotkey lost when the keyboard changed, " + describe(status));
    }
    setStatus(hotKey, status);
}

void X11HotKeys::setStatus(HotKey &hotKey, HotKeyStatus status) {
    if (hotKey.status != status) {
        hotKey.status = status;
        const auto outcome = hotKey.outcome; // which may unregister the hot key
        outcome(status);
    }
}

void X11HotKeys::scheduleRetry() {
    const bool isAnyTaken = std::ranges::any_of(
        hotKeys_, [](const HotKey &hotKey) { return hotKey.status == HotKeyStatus::alreadyTaken; });
    if (isAnyTaken && !nextRetry_) {
        nextRetry_ = mainLoop_.after(pauseBeforeRetry, [this] {
            nextRetry_.reset();
            retryTaken();
        });
    }
}

void X11HotKeys::retryTaken() {
    for (auto &hotKey : hotKeys_) {
        const auto state = stateOf(modifiers_.bits(), hotKey.modifiers);
        if (hotKey.status == HotKeyStatus::alreadyTaken && hotKey.grabbedStates.empty() && state) {
            hotKey.earlierPress = EarlierPress::unknown;
            readWhetherHeld(hotKey);
            grab(hotKey, *state);
        }
    }
    connection_.flush();
}

void X11HotKeys::ungrab(HotKey &hotKey) {
    hotKey.grabReplies.reset();
    for (const auto state : std::exchange(hotKey.grabbedStates, {})) {
        xcb_ungrab_key(connection_, hotKey.keycode, connection_.root(), state);
    }
}

void X11HotKeys::unregister(HotKey &hotKey) {
    const auto id = hotKey.id;
    const bool wasDown = hotKey.isDown;
    ungrab(hotKey);
    hotKeys_.remove_if([&hotKey](const HotKey &each) { return &each == &hotKey; });
    if (wasDown) {
        events_.emit({id, HotKeyEventKind::released});
    }
}

void X11HotKeys::grabAllAnew() {
    std::ranges::for_each(hotKeys_, [this](HotKey &hotKey) { ungrab(hotKey); });
    for (auto next = hotKeys_.begin(); next != hotKeys_.end();) {
        auto &hotKey = *next++; // the outcome may unregister it
        const auto state = stateOf(modifiers_.bits(), hotKey.modifiers);
        if (!state) {
            giveUp(hotKey, HotKeyStatus::invalidParameter);
        } else if (isHotKey(hotKey.keycode, *state)) {
            giveUp(hotKey, HotKeyStatus::alreadyTaken);
        } else {
            grab(hotKey, *state);
        }
    }
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
    if (pressed != hotKeys_.end() && pressed->earlierPress != EarlierPress::held) {
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
        hotKey.earlierPress = EarlierPress::released;
        if (std::exchange(hotKey.isDown, false)) {
            released.push_back(hotKey.id);
        }
    }
    for (const auto &id : released) {
        events_.emit({id, HotKeyEventKind::released});
    }
}

void X11HotKeys::notePhysicalPress(xcb_keycode_t keycode) {
    for (auto &hotKey : hotKeys_) {
        // One that comes before the reply was made before the server read the keys.
        if (hotKey.keycode == keycode && hotKey.earlierPress == EarlierPress::held) {
            hotKey.earlierPress = EarlierPress::released;
        }
        if (hotKey.keycode == keycode && hotKey.status == HotKeyStatus::alreadyTaken) {
            scheduleRetry();
        }
    }
}

} // namespace lumo::x11
