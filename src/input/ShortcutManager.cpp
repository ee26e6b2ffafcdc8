#include "input/ShortcutManager.h"

#include "platform/MainLoop.h"
#include "settings/SettingsStore.h"
#include "support/Invariant.h"
#include "support/Log.h"
#include "support/Utf8.h"

#include <algorithm>
#include <limits>
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
    std::vector<std::string> usedCombinations;
    for (const auto &shortcut : Shortcut::all) {
        if ((settingsStore_.*shortcut.isEnabled).value()) {
            registerHotKey(shortcut, usedCombinations);
        }
    }
}

void ShortcutManager::registerHotKey(const Shortcut &shortcut,
                                     std::vector<std::string> &usedCombinations) {
    const auto key = (settingsStore_.*shortcut.key).value();
    const auto modifiers = (settingsStore_.*shortcut.modifiers).value();
    auto combination = std::to_string(key) + "-" + std::to_string(modifiers);
    const std::string prefix = "[Lumo] " + std::string(shortcut.name) + " hotkey ";
    if (std::ranges::find(usedCombinations, combination) != usedCombinations.end()) {
        log_.print(prefix + "skipped due to conflict: " + combination);
        return;
    }
    require(key >= 0 && key <= std::numeric_limits<std::uint32_t>::max(),
            "a shortcut's key code must be an unsigned 32-bit number, not " + std::to_string(key));
    auto registration =
        hotKeyService_.registerHotKey(static_cast<std::uint32_t>(key), hotKeyModifiers(modifiers),
                                      {fourCC(shortcut.signature), shortcut.number});
    if (registration.status != HotKeyStatus::success) {
        log_.print(prefix + "register failed, " + describe(registration.status));
        return;
    }
    hotKey(shortcut.event).registration = std::move(registration.handle);
    usedCombinations.push_back(std::move(combination));
}

void ShortcutManager::unregisterHotKeys() {
    for (auto event :
         {ShortcutEvent::toggle, ShortcutEvent::peek, ShortcutEvent::setCoverFromFrontmost}) {
        hotKey(event).registration.reset();
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
