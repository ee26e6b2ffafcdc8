#include "settings/SettingsStore.h"

#include "platform/UserDefaults.h"

#include <algorithm>

namespace lumo {

SettingsStore::SettingsStore(const Platform &platform)
    : userDefaults_(platform.userDefaults)
    , vocabulary_(platform.vocabulary) {
    replaceOldPeekShortcut();
    changesByOthers_ = userDefaults_.onChangeByOthers(
        [this](const std::vector<std::string> &keys) { reload(keys); });
}

// The first default of the Peek hot key is the one of the turn-off hot key today.
void SettingsStore::replaceOldPeekShortcut() {
    if (peekShortcutKey.value() == 45 && peekShortcutModifiers.value() == 6144) {
        peekShortcutKey.set(peekShortcutKey.defaultValue());
        peekShortcutModifiers.set(peekShortcutModifiers.defaultValue());
    }
}

void SettingsStore::reload(const std::vector<std::string> &keys) {
    for (auto *setting : settings_) {
        if (std::ranges::find(keys, setting->key()) != keys.end()) {
            setting->reload();
        }
    }
    didReload.emit();
}

} // namespace lumo
