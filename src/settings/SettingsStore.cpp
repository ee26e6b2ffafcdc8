#include "settings/SettingsStore.h"

namespace lumo {

SettingsStore::SettingsStore(UserDefaults &userDefaults)
    : userDefaults_(userDefaults) {
    replaceOldPeekShortcut();
}

// The first default of the Peek hot key is the one of the turn-off hot key today.
void SettingsStore::replaceOldPeekShortcut() {
    if (peekShortcutKey.value() == 45 && peekShortcutModifiers.value() == 6144) {
        peekShortcutKey.set(peekShortcutKey.defaultValue());
        peekShortcutModifiers.set(peekShortcutModifiers.defaultValue());
    }
}

} // namespace lumo
