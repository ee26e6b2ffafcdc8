#include "windows/PermissionManager.h"

#include "platform/Accessibility.h"
#include "platform/MainLoop.h"
#include "support/NotificationCenter.h"

namespace lumo {

PermissionManager::PermissionManager(const Platform &platform,
                                     NotificationCenter &notificationCenter)
    : accessibility_(platform.accessibility)
    , mainLoop_(platform.mainLoop)
    , notificationCenter_(notificationCenter) {
}

void PermissionManager::checkPermission() {
    hasAccessibilityPermission.set(accessibility_.isProcessTrusted());
    mainLoop_.post(lifetime_.guard(
        [this] { notificationCenter_.post(accessibilityPermissionStatusChanged); }));
}

} // namespace lumo
