#pragma once

#include "platform/HotKeyService.h"
#include "platform/Platform.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumo {

class SettingsStore;

enum class ShortcutEvent { toggle, peek, setCoverFromFrontmost };

// The first four code points of a UTF-8 text packed into one number: each is combined with those
// before it, shifted by eight bits. So four ASCII characters take a byte each, the first the top
// one. 0 for an empty text.
std::uint32_t fourCC(std::string_view text);

// The hot-key service's modifier bits for a shortcut modifier mask. Unknown bits are dropped.
std::uint32_t hotKeyModifiers(std::int64_t modifiers);

// Registers the global shortcuts that the settings describe and turns their presses into events,
// one for each physical press. Main thread only, but for the service's handler, which hands its
// events over.
class ShortcutManager {
  public:
    ShortcutManager(const Platform &platform, SettingsStore &settingsStore);
    ~ShortcutManager();
    ShortcutManager(const ShortcutManager &) = delete;
    ShortcutManager &operator=(const ShortcutManager &) = delete;

    // True while the hot keys are registered. The caller of registerHotKeys() sets it.
    Published<bool> isListening{false};

    // Called on the main thread.
    std::function<void(ShortcutEvent)> onShortcutTriggered;

    void installHotKeyHandlerIfNeeded();

    // Registers every enabled shortcut anew: Peek first, then Toggle, then Set cover. A combination
    // that an earlier one has claimed, or that the service refuses, is skipped with a log line once
    // all outcomes are known, which may be in a later turn of the main loop. So is one whose key
    // code is no unsigned 32-bit number.
    void registerHotKeys();

    void unregisterHotKeys();

    // Registers anew if the manager was listening; makes sure that nothing is registered otherwise.
    void reregisterShortcuts();

    // Whether another program has the combination that the shortcut wants. For what has no part in
    // the registration itself.
    Published<bool> &isTaken(ShortcutEvent event) { return hotKey(event).isTaken; }

    // Tries again to register what another program had, without another log line.
    void retryTaken();

  private:
    struct Shortcut;
    struct HotKey {
        Handle registration;
        std::string combination; // that the shortcut wants; empty when it is turned off
        HotKeyStatus status = HotKeyStatus::success; // of the registration, once it is known
        bool isAwaited = false;                      // the registration's first outcome
        bool isDown = false;
        Published<bool> isTaken{false};
    };

    void setupSettingsBinding();
    bool hasKey(const Shortcut &shortcut) const;
    std::string combinationOf(const Shortcut &shortcut) const;
    const Shortcut &claimantOf(const std::string &combination);
    void requestHotKey(const Shortcut &shortcut);
    void handleOutcome(HotKey &requested, HotKeyStatus status);
    void logFailures();
    void announceTaken();
    void handleHotKeyEvent(const HotKeyEvent &event);
    void emit(ShortcutEvent event);
    HotKey &hotKey(ShortcutEvent event) { return hotKeys_[static_cast<std::size_t>(event)]; }

    HotKeyService &hotKeyService_;
    Log &log_;
    MainLoop &mainLoop_;
    SettingsStore &settingsStore_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    std::array<HotKey, 3> hotKeys_; // by ShortcutEvent
    std::size_t outcomesToCome_ = 0;
    Handle hotKeyHandler_;
    bool willReregister_ = false; // in the next turn of the main loop
    std::vector<Subscription> cancellables_;
    Lifetime lifetime_;
};

} // namespace lumo
