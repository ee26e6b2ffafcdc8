#import "platform/macos/MacBackend.h"

#import "platform/macos/LayerRenderer.h"
#import "platform/macos/OverrideChecks.h"
#import "platform/macos/UnifiedLog.h"
#include "platform/macos/logic/MacVocabulary.h"

namespace lumo::macos {

MacBackend::MacBackend(Log &log)
    : log_(log)
    , application_(mainLoop_)
    , screens_(mainLoop_)
    , accessibility_(workspace_)
    , overlayWindows_(windowServer_, log)
    , hotKeys_(log)
    , userNotifications_(mainLoop_)
    , loginItemLog_(unifiedLog("LaunchAtLogin"))
    , viewHost_(statusItem_)
    , updateFramework_(mainLoop_) {
#ifndef NDEBUG
    checkOverrides();
#endif
}

Platform MacBackend::platform() {
    return {.accessibility = accessibility_,
            .application = application_,
            .applicationStrips = applicationStrips_,
            .eventMonitors = eventMonitors_,
            .hotKeyService = hotKeys_,
            .keyboard = keyboard_,
            .log = log_,
            .loginItem = loginItem_,
            .loginItemLog = loginItemLog_,
            .mainLoop = mainLoop_,
            .overlayWindows = overlayWindows_,
            .screens = screens_,
            .statusItem = statusItem_,
            .updateFramework = updateFramework_,
            .userDefaults = userDefaults_,
            .userNotifications = userNotifications_,
            .vocabulary = vocabulary(),
            .windowServer = windowServer_,
            .workspace = workspace_,
            .capabilities = {.liveBackdrop = hasBackdropLayers(),
                             .updates = MacUpdateFramework::isAvailable()}};
}

} // namespace lumo::macos
