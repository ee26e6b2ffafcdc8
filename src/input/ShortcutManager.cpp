#include "input/ShortcutManager.h"

#include "platform/MainLoop.h"
#include "platform/ShortcutModifiers.h"
#include "settings/SettingsStore.h"
#include "support/Log.h"
#include "support/Utf8.h"

#include <algorithm>
#include <string>
#include <utility>

namespace lumo {

// One shortcut: the settings that describe it and its identity with the hot-key service.
struct ShortcutManager::Shortcut {
    ShortcutEvent event;
    std::string_view name;
    std::string_view signature;
    std::uint32_t number;
    Setting<std::int64_t> SettingsStore::*key;
    Setting<std::int64_t> SettingsStore::*modifiers;
    Setting<bool> SettingsStore::*isEnabled;

    // In the order of registration, which decides who keeps a combination that several want.
    static const std::array<Shortcut, 3> all;
};

const std::array<ShortcutManager::Shortcut, 3> ShortcutManager::Shortcut::all = {{
    {ShortcutEvent::peek, "Peek", "LUMP", 2, &SettingsStore::peekShortcutKey,
     &SettingsStore::peekShortcutModifiers, &SettingsStore::peekShortcutEnabled},
    {ShortcutEvent::toggle, "Toggle", "LUMT", 1, &SettingsStore::toggleShortcutKey,
     &SettingsStore::toggleShortcutModifiers, &SettingsStore::toggleShortcutEnabled},
    {ShortcutEvent::setCoverFromFrontmost, "Cover", "LUMC", 5, &SettingsStore::coverSetShortcutKey,
     &SettingsStore::coverSetShortcutModifiers, &SettingsStore::coverSetShortcutEnabled},
}};

std::uint32_t fourCC(std::string_view text) {
    std::uint32_t code = 0;
    for (int count = 0; count < 4 && !text.empty(); ++count) {
        code = (code << 8U) | takeCodePoint(text);
    }
    return code;
}

std::uint32_t hotKeyModifiers(std::int64_t modifiers) {
    const auto flag = [modifiers](std::int64_t bit, std::uint32_t hotKeyBit) {
        return (modifiers & bit) != 0 ? hotKeyBit : 0U;
    };
    return flag(shortcutModifier::command, hotKeyModifier::command) |
           flag(shortcutModifier::option, hotKeyModifier::option) |
           flag(shortcutModifier::control, hotKeyModifier::control) |
           flag(shortcutModifier::shift, hotKeyModifier::shift);
}

ShortcutManager::ShortcutManager(const Platform &platform, SettingsStore &settingsStore)
    : hotKeyService_(platform.hotKeyService)
    , log_(platform.log)
    , mainLoop_(platform.mainLoop)
    , settingsStore_(settingsStore) {
    setupSettingsBinding();
}

ShortcutManager::~ShortcutManager() {
    unregisterHotKeys();
    isListening.set(false);
}

void ShortcutManager::setupSettingsBinding() {
    // The settings announce before they store, and registration reads the store: so the next turn.
    // A recorded shortcut changes two settings at once, which takes one registration.
    const auto reregister = [this](const auto &) {
        if (!std::exchange(willReregister_, true)) {
            mainLoop_.post(lifetime_.guard([this] {
                willReregister_ = false;
                reregisterShortcuts();
            }));
        }
    };
    for (const auto &shortcut : Shortcut::all) {
        cancellables_.push_back((settingsStore_.*shortcut.key).subscribeToChanges(reregister));
        cancellables_.push_back(
            (settingsStore_.*shortcut.modifiers).subscribeToChanges(reregister));
        cancellables_.push_back(
            (settingsStore_.*shortcut.isEnabled).subscribeToChanges(reregister));
    }
}

void ShortcutManager::installHotKeyHandlerIfNeeded() {
    if (!hotKeyHandler_) {
        hotKeyHandler_ = hotKeyService_.installEventHandler(
            [this](const HotKeyEvent &event) { handleHotKeyEvent(event); });
    }
}

void ShortcutManager::registerHotKeys() {
    unregisterHotKeys();
    std::vector<const Shortcut *> claimants;
    for (const auto &shortcut : Shortcut::all) {
        auto &combination = hotKey(shortcut.event).combination;
        combination = combinationOf(shortcut);
        if (!combination.empty() && &claimantOf(combination) == &shortcut) {
            claimants.push_back(&shortcut);
        }
    }
    outcomesToCome_ = claimants.size();
    for (const auto *shortcut : claimants) {
        hotKey(shortcut->event).isAwaited = true;
        requestHotKey(*shortcut);
    }
    if (claimants.empty()) {
        announceTaken();
    }
}

bool ShortcutManager::hasKey(const Shortcut &shortcut) const {
    return std::in_range<std::uint32_t>((settingsStore_.*shortcut.key).value());
}

// Empty for a shortcut that is turned off, or has no key.
std::string ShortcutManager::combinationOf(const Shortcut &shortcut) const {
    if (!(settingsStore_.*shortcut.isEnabled).value()) {
        return {};
    }
    if (!hasKey(shortcut)) {
        log_.print("[Lumo] " + std::string(shortcut.name) + " hotkey left out: " +
                   std::to_string((settingsStore_.*shortcut.key).value()) + " is no key code");
        return {};
    }
    return std::to_string((settingsStore_.*shortcut.key).value()) + "-" +
           std::to_string((settingsStore_.*shortcut.modifiers).value());
}

// The first shortcut that wants the combination, which one of them does.
const ShortcutManager::Shortcut &ShortcutManager::claimantOf(const std::string &combination) {
    return *std::ranges::find_if(Shortcut::all, [&](const Shortcut &shortcut) {
        return hotKey(shortcut.event).combination == combination;
    });
}

void ShortcutManager::requestHotKey(const Shortcut &shortcut) {
    auto &requested = hotKey(shortcut.event);
    requested.registration.reset();
    requested.registration = hotKeyService_.registerHotKey(
        static_cast<std::uint32_t>((settingsStore_.*shortcut.key).value()),
        hotKeyModifiers((settingsStore_.*shortcut.modifiers).value()),
        {fourCC(shortcut.signature), shortcut.number},
        [this, &requested](HotKeyStatus status) { handleOutcome(requested, status); });
}

void ShortcutManager::handleOutcome(HotKey &requested, HotKeyStatus status) {
    requested.status = status;
    if (std::exchange(requested.isAwaited, false) && --outcomesToCome_ == 0) {
        logFailures();
    }
    if (outcomesToCome_ == 0) {
        announceTaken();
    }
}

void ShortcutManager::retryTaken() {
    for (const auto &shortcut : Shortcut::all) {
        const auto &wanted = hotKey(shortcut.event);
        // Only what is still as it was registered; anything else is about to be registered anew.
        if (isListening.value() && outcomesToCome_ == 0 && !willReregister_ &&
            wanted.status == HotKeyStatus::alreadyTaken && !wanted.combination.empty() &&
            &claimantOf(wanted.combination) == &shortcut) {
            requestHotKey(shortcut);
        }
    }
}

void ShortcutManager::announceTaken() {
    for (auto &shortcut : hotKeys_) {
        const bool isTaken =
            !shortcut.combination.empty() &&
            hotKey(claimantOf(shortcut.combination).event).status == HotKeyStatus::alreadyTaken;
        if (isTaken != shortcut.isTaken.value()) {
            shortcut.isTaken.set(isTaken);
        }
    }
}

void ShortcutManager::logFailures() {
    for (const auto &shortcut : Shortcut::all) {
        const auto &combination = hotKey(shortcut.event).combination;
        if (combination.empty()) {
            continue;
        }
        const std::string prefix = "[Lumo] " + std::string(shortcut.name) + " hotkey ";
        const auto &claimant = claimantOf(combination);
        const auto status = hotKey(claimant.event).status;
        if (status != HotKeyStatus::success) {
            log_.print(prefix + "register failed, " + describe(status));
        } else if (&claimant != &shortcut) {
            log_.print(prefix + "skipped due to conflict: " + combination);
        }
    }
}

void ShortcutManager::unregisterHotKeys() {
    for (auto event :
         {ShortcutEvent::toggle, ShortcutEvent::peek, ShortcutEvent::setCoverFromFrontmost}) {
        hotKey(event).registration.reset();
        hotKey(event).isDown = false; // a release that comes later is not announced
    }
}

void ShortcutManager::reregisterShortcuts() {
    const bool wasListening = isListening.value();
    unregisterHotKeys();
    isListening.set(false);
    if (wasListening) {
        installHotKeyHandlerIfNeeded();
        registerHotKeys();
        isListening.set(true);
    }
}

void ShortcutManager::handleHotKeyEvent(const HotKeyEvent &event) {
    if (!event.id) {
        return;
    }
    const auto shortcut = std::ranges::find(Shortcut::all, event.id->number, &Shortcut::number);
    if (shortcut == Shortcut::all.end()) {
        return;
    }
    auto &isDown = hotKey(shortcut->event).isDown;
    const bool wasDown = std::exchange(isDown, event.kind == HotKeyEventKind::pressed);
    if (isDown && !wasDown) {
        emit(shortcut->event);
    }
}

void ShortcutManager::emit(ShortcutEvent event) {
    const auto trigger = [this, event] {
        if (onShortcutTriggered) {
            onShortcutTriggered(event);
        }
    };
    if (std::this_thread::get_id() == mainThread_) {
        trigger();
    } else {
        mainLoop_.post(lifetime_.guard(trigger));
    }
}

} // namespace lumo
