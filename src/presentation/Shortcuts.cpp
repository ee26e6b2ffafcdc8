#include "presentation/Shortcuts.h"

#include "platform/Keyboard.h"
#include "platform/Vocabulary.h"
#include "settings/SettingsStore.h"

#include <algorithm>

namespace lumo {

namespace {

void replace(std::string &text, std::string_view placeholder, const std::string &replacement) {
    if (const auto at = text.find(placeholder); at != std::string::npos) {
        text.replace(at, placeholder.size(), replacement);
    }
}

} // namespace

std::string shortcutLabel(const Platform &platform, std::int64_t keyCode, std::int64_t modifiers) {
    std::string label;
    for (const auto &modifier : platform.vocabulary.modifiers) {
        if ((modifiers & modifier.bit) != 0) {
            label.append(modifier.inShortcuts).append(platform.vocabulary.keySeparator);
        }
    }
    return label + platform.keyboard.keyName(keyCode);
}

std::string modifierName(const Vocabulary &vocabulary, std::string_view storedName) {
    const auto found =
        std::ranges::find(vocabulary.modifiers, storedName, &ModifierWords::storedName);
    return std::string(found != vocabulary.modifiers.end() ? found->name : storedName);
}

std::string withShortcuts(std::string_view text, const Platform &platform,
                          const SettingsStore &settings) {
    constexpr std::int64_t keyD = 2;
    std::string filled(text);
    replace(filled, "{toggle}",
            shortcutLabel(platform, settings.toggleShortcutKey.value(),
                          settings.toggleShortcutModifiers.value()));
    replace(filled, "{D}", platform.keyboard.keyName(keyD));
    return filled;
}

} // namespace lumo
