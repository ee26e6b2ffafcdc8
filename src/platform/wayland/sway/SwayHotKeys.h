#pragma once

#include "platform/HotKeyService.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <list>
#include <string>

namespace lumo::wayland {
class WaylandKeyboard;
}

namespace lumo::wayland::sway {

class SwayConnection;
struct Message;

// Hot keys as bindings of sway that do nothing but tell of themselves. They are made while the
// program runs, so that the user's configuration stays as it is, and made again when sway has read
// that anew. Keys for which the user has a binding are taken. Main thread only.
class SwayHotKeys final : public HotKeyService {
  public:
    // Both outlive the object.
    SwayHotKeys(SwayConnection &connection, const WaylandKeyboard &keyboard);
    ~SwayHotKeys() override;
    SwayHotKeys(const SwayHotKeys &) = delete;
    SwayHotKeys &operator=(const SwayHotKeys &) = delete;

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;

  private:
    struct HotKey {
        std::uint32_t keycode = 0; // XKB's
        std::uint32_t modifiers = 0;
        HotKeyID id;
        std::uint64_t serial = 0;
        std::function<void(HotKeyStatus)> outcome;
        bool isBound = false;
        bool isDown = false;
        Lifetime lifetime = {};
    };

    void handle(const Message &event);
    void bindUnlessTaken(HotKey &hotKey);
    bool isTaken(const HotKey &hotKey, const std::string &configuration) const;
    void bind(HotKey &hotKey);
    void unbind(const HotKey &hotKey);
    void unregister(HotKey &hotKey);
    void trigger(const std::string &command);

    SwayConnection &connection_;
    const WaylandKeyboard &keyboard_;
    std::list<HotKey> hotKeys_;
    std::uint64_t nextSerial_ = 1;
    Signal<HotKeyEvent> triggered_;
    Handle events_;
};

} // namespace lumo::wayland::sway
