#pragma once

#include "platform/HotKeyService.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <vector>

namespace lumo::freedesktop {
class SessionBus;
}

namespace lumo::wayland {
class WaylandKeyboard;
}

namespace lumo::wayland::kwin {

// Hot keys by KGlobalAccel, KDE's service for them: the user sees them in the system's settings,
// under this program's name, for as long as they are registered. Main thread only; never waits but
// for the release to be sent.
class KWinHotKeys final : public HotKeyService {
  public:
    // Both outlive the object.
    KWinHotKeys(freedesktop::SessionBus &bus, const WaylandKeyboard &keyboard);
    ~KWinHotKeys() override;
    KWinHotKeys(const KWinHotKeys &) = delete;
    KWinHotKeys &operator=(const KWinHotKeys &) = delete;

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;

  private:
    struct HotKey {
        std::vector<std::int32_t> keys; // by Qt's numbers
        HotKeyID id;
        std::string action; // the service's name for it
        std::function<void(HotKeyStatus)> outcome;
        bool isDown = false;
        freedesktop::AsyncCalls calls = {};
        Lifetime lifetime = {};
    };

    std::vector<std::int32_t> keysOf(std::uint32_t keyCode, std::uint32_t modifiers) const;
    void connect();
    void claim(HotKey &hotKey);
    void release(const HotKey &hotKey);
    void unregister(HotKey &hotKey);
    void trigger(const std::string &action, HotKeyEventKind kind);

    freedesktop::SessionBus &bus_;
    const WaylandKeyboard &keyboard_;
    std::list<HotKey> hotKeys_;
    std::uint64_t nextAction_ = 1;
    Signal<HotKeyEvent> triggered_;
    Handle signals_;
    Handle busChanges_;
};

} // namespace lumo::wayland::kwin
