#include "platform/x11/X11Backend.h"

#include "platform/x11/Connection.h"

namespace lumo::x11 {

X11Backend::X11Backend(Connection &connection, MainLoop &mainLoop, Log &log)
    : mainLoop_(mainLoop)
    , log_(log)
    , userDefaults_(PropertyListUserDefaults::standardFile(), mainLoop, log)
    , mirror_(connection)
    , screens_(connection, mainLoop)
    , workspace_(connection, mirror_)
    , windowServer_(mirror_, screens_, workspace_)
    , accessibility_(connection, mirror_)
    , overlayWindows_(
          connection, mirror_, screens_, [this] { return screens_.pointSpace(); }, mainLoop, log)
    , keyboardModifiers_(connection)
    , eventMonitors_(connection, keyboardModifiers_, mirror_, screens_)
    , hotKeys_(connection, keyboardModifiers_, log)
    , userNotifications_(mainLoop) {
}

Platform X11Backend::platform() {
    return {.accessibility = accessibility_,
            .eventMonitors = eventMonitors_,
            .hotKeyService = hotKeys_,
            .log = log_,
            .mainLoop = mainLoop_,
            .overlayWindows = overlayWindows_,
            .preferenceDomains = preferenceDomains_,
            .screens = screens_,
            .userDefaults = userDefaults_,
            .userNotifications = userNotifications_,
            .windowServer = windowServer_,
            .workspace = workspace_,
            .capabilities = {.liveBackdrop = overlayWindows_.canDrawBackdrops(),
                             .globalKeyMonitors = eventMonitors_.hearsKeys()}};
}

} // namespace lumo::x11
