#pragma once

#include "platform/HotKeyService.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <vector>

namespace lumo {
class Log;
}

namespace lumo::x11 {

class Connection;
class KeyboardModifiers;

// Hot keys as passive grabs of a key on the root window, one for each state of the lock keys.
// X11Input hands the presses over, on the main thread. A hot key that is unregistered while it is
// held is reported as released; one whose key is down already when it is registered waits for the
// next press.
//
// Registering waits for the server, to learn whether another client has the key. When the keyboard
// gets other modifiers, all hot keys are grabbed anew without waiting; one that can't be had then
// costs a log line and stays silent until the next such change or its next registration.
class X11HotKeys final : public HotKeyService {
  public:
    X11HotKeys(Connection &connection, KeyboardModifiers &modifiers, const Log &log);
    ~X11HotKeys() override;

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      HotKeyID id) override;

    // Whether a press of this key, with this state of the modifiers, is that of a hot key.
    bool isHotKey(xcb_keycode_t keycode, std::uint16_t state) const;

    // The press of a hot key, from whatever source; auto-repeats left out.
    void press(xcb_keycode_t keycode, std::uint16_t state);

    void release(xcb_keycode_t keycode);

    // The user pressed a key, by a raw event with this sequence number, which auto-repeat has not.
    void notePhysicalPress(xcb_keycode_t keycode, std::uint32_t sequence);

  private:
    struct HotKey {
        std::uint32_t modifiers;
        HotKeyID id;
        xcb_keycode_t keycode;
        // The modifier bits that it is grabbed with, with each state of the lock keys.
        std::vector<std::uint16_t> grabbedStates = {};
        std::uint64_t grabSerial = 0; // tells these grabs from earlier ones
        bool isDown = false;
        // While its key is down since before this request, what comes is auto-repeat.
        std::optional<std::uint32_t> heldAtRequest = {};

        bool isPressedBy(xcb_keycode_t key, std::uint16_t state) const;
    };

    void makeAutoRepeatDetectable();
    std::optional<std::uint16_t> stateOf(std::uint32_t modifiers) const;
    std::vector<std::uint16_t> grabStates(std::uint16_t state) const;
    HotKeyStatus prepareGrabs(HotKey &hotKey);
    xcb_void_cookie_t grab(const HotKey &hotKey, std::uint16_t state);
    HotKeyStatus grabAndWait(HotKey &hotKey);
    void grabWithoutWaiting(HotKey &hotKey);
    void giveUp(std::uint64_t grabSerial);
    void reportLoss(HotKeyStatus status) const;
    void ungrab(HotKey &hotKey);
    void unregister(std::list<HotKey>::iterator hotKey);
    void grabAllAnew();

    Connection &connection_;
    const KeyboardModifiers &modifiers_;
    const Log &log_;
    std::list<HotKey> hotKeys_;
    std::uint64_t lastGrabSerial_ = 0;
    Signal<HotKeyEvent> events_;
    Handle modifierChanges_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
