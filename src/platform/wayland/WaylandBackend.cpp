#include "platform/wayland/WaylandBackend.h"

#include "platform/freedesktop/DesktopVocabulary.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/SystemUpdates.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/windows/Compositor.h"

#include <string>
#include <string_view>
#include <utility>

namespace lumo::wayland {

WaylandBackend::WaylandBackend(Connection &connection, Compositor &compositor,
                               WaylandKeyboard &keyboard, freedesktop::SessionBus &sessionBus,
                               freedesktop::GlibMainLoop &mainLoop, Log &log,
                               std::function<void()> terminate)
    : mainLoop_(mainLoop)
    , log_(log)
    , compositor_(compositor)
    , keyboard_(keyboard)
    , userDefaults_(freedesktop::PropertyListUserDefaults::standardFile(), mainLoop, log)
    , screens_(connection)
    , workspace_(compositor.windows(), log)
    , windowServer_(compositor.windows(), screens_, workspace_)
    , desktopChanges_(compositor.windows(), screens_, workspace_)
    , accessibility_(compositor.windows())
    , overlayWindows_(connection, screens_, compositor.windows(), mainLoop)
    , eventMonitors_(compositor)
    , userNotifications_(mainLoop)
    , application_(workspace_, std::move(terminate))
    , loginItem_(freedesktop::AutostartLoginItem::ofThisProgram())
    , loginItemLog_([&log](std::string_view line) { log.print("[Lumo] " + std::string(line)); })
    , statusItem_(sessionBus, screens_)
    , updates_(freedesktop::makeSystemUpdates(mainLoop)) {
}

Platform WaylandBackend::platform() {
    return {.accessibility = accessibility_,
            .application = application_,
            .applicationStrips = applicationStrips_,
            .eventMonitors = eventMonitors_,
            .hotKeyService = compositor_.hotKeys(),
            .keyboard = keyboard_,
            .log = log_,
            .loginItem = loginItem_,
            .loginItemLog = loginItemLog_,
            .mainLoop = mainLoop_,
            .overlayWindows = overlayWindows_,
            .screens = screens_,
            .statusItem = statusItem_,
            .updateFramework = *updates_,
            .userDefaults = userDefaults_,
            .userNotifications = userNotifications_,
            .vocabulary = freedesktop::vocabulary(),
            .windowServer = windowServer_,
            .workspace = workspace_,
            .capabilities = {.liveBackdrop = compositor_.mayBlur() || overlayWindows_.canBlur(),
                             .globalKeyMonitors = false,
                             .permissionComesByItself = false,
                             .updates = freedesktop::hasSystemUpdates},
            .desktopChanges = &desktopChanges_};
}

} // namespace lumo::wayland
