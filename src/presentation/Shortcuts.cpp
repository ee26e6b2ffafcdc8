#include "presentation/Shortcuts.h"

#include "platform/Keyboard.h"
#include "platform/Vocabulary.h"
#include "settings/SettingsStore.h"

#include <algorithm>

namespace lumo {

std::vector<std::string> shortcutKeys(const Platform &platform, std::int64_t keyCode,
                                      std::int64_t modifiers) {
    std::vector<std::string> keys;
    for (const auto &modifier : platform.vocabulary.modifiers) {
        if ((modifiers & modifier.bit) != 0) {
            keys.emplace_back(modifier.inShortcuts);
        }
    }
    keys.push_back(platform.keyboard.keyName(keyCode));
    return keys;
}

std::vector<std::string> toggleKeys(const Platform &platform, const SettingsStore &settings) {
    return shortcutKeys(platform, settings.toggleShortcutKey.value(),
                        settings.toggleShortcutModifiers.value());
}

std::vector<std::string> emergencyKeys(const Platform &platform) {
    constexpr std::int64_t keyD = 2;
    const auto &modifiers = platform.vocabulary.emergencyModifiers;
    std::vector<std::string> keys(modifiers.begin(), modifiers.end());
    keys.push_back(platform.keyboard.keyName(keyD));
    return keys;
}

std::string joinedKeys(const Platform &platform, const std::vector<std::string> &keys) {
    std::string joined;
    for (const auto &key : keys) {
        joined.append(joined.empty() ? "" : platform.vocabulary.keySeparator).append(key);
    }
    return joined;
}

std::string shortcutLabel(const Platform &platform, std::int64_t keyCode, std::int64_t modifiers) {
    return joinedKeys(platform, shortcutKeys(platform, keyCode, modifiers));
}

std::string modifierName(const Vocabulary &vocabulary, std::string_view storedName) {
    const auto found =
        std::ranges::find(vocabulary.modifiers, storedName, &ModifierWords::storedName);
    return std::string(found != vocabulary.modifiers.end() ? found->name : storedName);
}

} // namespace lumo
