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
class MainLoop;
} // namespace lumo

namespace lumo::x11 {

class Connection;
class KeyboardModifiers;

// Hot keys as passive grabs of a key on the root window, one for each state of the lock keys.
// X11Input hands the presses over, on the main thread. A hot key that is unregistered while it is
// held is reported as released; one whose key is down already when it is registered waits for the
// next press.
//
// Nothing waits for the server: the outcome of a registration, whether another client has the key,
// is called when the replies have arrived. When the keyboard gets other modifiers, all hot keys are
// grabbed anew; one that can't be had then costs a log line. What another client has is requested
// again after any client's window was destroyed, as when that client ended, and after the user
// pressed the key.
class X11HotKeys final : public HotKeyService {
  public:
    X11HotKeys(Connection &connection, KeyboardModifiers &modifiers, MainLoop &mainLoop,
               const Log &log);
    ~X11HotKeys() override;

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;

    // Whether a press of this key, with this state of the modifiers, is that of a hot key.
    bool isHotKey(xcb_keycode_t keycode, std::uint16_t state) const;

    // The press of a hot key, from whatever source; auto-repeats left out.
    void press(xcb_keycode_t keycode, std::uint16_t state);

    void release(xcb_keycode_t keycode);

    // The user pressed a key, by a raw event, which auto-repeat does not make. A server that sends
    // none is asked from time to time whether a key is still held.
    void notePhysicalPress(xcb_keycode_t keycode);

  private:
    // Whether the user has held a key down since before it was requested as a hot key. Until it is
    // released all its presses are auto-repeat then.
    enum class EarlierPress : std::uint8_t { unknown, held, released };

    struct HotKey {
        std::uint32_t modifiers = 0;
        HotKeyID id = {};
        xcb_keycode_t keycode = 0;
        std::function<void(HotKeyStatus)> outcome = {};
        std::optional<HotKeyStatus> status = {}; // that the outcome was last called with
        // The modifier bits that it is grabbed with, with each state of the lock keys.
        std::vector<std::uint16_t> grabbedStates = {};
        std::size_t grabsInFlight = 0;
        bool isDown = false;
        EarlierPress earlierPress = EarlierPress::unknown;
        Handle nextLook = {};                     // at the key, while it is held
        std::optional<Lifetime> grabReplies = {}; // of the latest grabs
        Lifetime lifetime = {};

        bool isPressedBy(xcb_keycode_t key, std::uint16_t state) const;
    };

    void makeAutoRepeatDetectable();
    std::vector<std::uint16_t> grabStates(std::uint16_t state) const;
    void readWhetherHeld(HotKey &hotKey);
    void grab(HotKey &hotKey, std::uint16_t state);
    void handleGrabReply(HotKey &hotKey, bool succeeded);
    void giveUp(HotKey &hotKey, HotKeyStatus status);
    void setStatus(HotKey &hotKey, HotKeyStatus status);
    void scheduleRetry();
    void retryTaken();
    void ungrab(HotKey &hotKey);
    void unregister(HotKey &hotKey);
    void grabAllAnew();

    Connection &connection_;
    const KeyboardModifiers &modifiers_;
    MainLoop &mainLoop_;
    const Log &log_;
    std::list<HotKey> hotKeys_;
    Signal<HotKeyEvent> events_;
    Handle modifierChanges_;
    Handle destroyedWindows_;
    Handle nextRetry_;
};

} // namespace lumo::x11
