#pragma once

#include "platform/HotKeyService.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <list>
#include <memory>
#include <vector>

namespace lumo::x11 {

class Connection;

// Hot keys as passive grabs of a key on the root window, one for each state of the lock keys.
// Follows changes of the keyboard's modifiers. Events arrive on the main thread; auto-repeat is
// reported as repeated presses without releases between them. A hot key that is unregistered while
// it is held is reported as released. Registering waits for the server, to learn whether another
// client has the key.
class X11HotKeys final : public HotKeyService {
  public:
    explicit X11HotKeys(Connection &connection);
    ~X11HotKeys() override;

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                      HotKeyID id) override;

  private:
    // Which bits of a key event's state the keys of this keyboard set; 0 for a key that it lacks.
    struct ModifierBits {
        std::uint16_t command = 0;
        std::uint16_t option = 0;
        std::uint16_t numLock = 0;
        std::uint16_t scrollLock = 0;

        bool operator==(const ModifierBits &) const = default;
    };

    struct HotKey {
        std::uint32_t modifiers;
        HotKeyID id;
        xcb_keycode_t keycode;
        std::uint16_t state = 0; // the modifier bits that it is grabbed with, lock keys aside
        std::vector<std::uint16_t> grabbedStates = {}; // the same, with each state of the lock keys
        bool isDown = false;
    };

    void makeAutoRepeatDetectable();
    void readModifierBits();
    std::optional<std::uint16_t> stateOf(std::uint32_t modifiers) const;
    std::vector<std::uint16_t> lockStates() const;
    std::int32_t grab(HotKey &hotKey);
    void ungrab(HotKey &hotKey);
    void unregister(std::list<HotKey>::iterator hotKey);
    void grabAllAnew();
    void handleEvent(const xcb_generic_event_t &event);
    void handleKeyPress(const xcb_key_press_event_t &event);
    void handleKeyRelease(const xcb_key_release_event_t &event);

    Connection &connection_;
    ModifierBits bits_;
    std::list<HotKey> hotKeys_;
    Signal<HotKeyEvent> events_;
    Handle connectionEvents_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
