#include "app/LaunchAtLoginManager.h"

#include "platform/LoginItem.h"
#include "support/Log.h"

namespace lumo {

LaunchAtLoginManager::LaunchAtLoginManager(const Platform &platform)
    : loginItem_(platform.loginItem)
    , log_(platform.loginItemLog) {
}

bool LaunchAtLoginManager::enable() {
    const auto error = loginItem_.registerMainApplication();
    refusal.set(error.value_or(""));
    if (error) {
        log_.print("Failed to register for launch at login: " + *error);
        return false;
    }
    isEnabled.set(true);
    return true;
}

bool LaunchAtLoginManager::disable() {
    if (const auto error = loginItem_.unregisterMainApplication()) {
        log_.print("Failed to unregister for launch at login: " + *error);
        return false;
    }
    isEnabled.set(false);
    return true;
}

} // namespace lumo
