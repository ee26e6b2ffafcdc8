#include "platform/x11/X11Backend.h"

#include "platform/freedesktop/DesktopVocabulary.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/SystemUpdates.h"
#include "platform/x11/server/Connection.h"

#include <string>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

// What tells this display from others of the session: "X1" for :1, and "X1_2" for its third screen.
std::string nameOnBus(const Connection &connection) {
    const auto &name = connection.displayName();
    char *host = nullptr;
    int display = 0;
    xcb_parse_display(name.empty() ? nullptr : name.c_str(), &host, &display, nullptr);
    const XcbPointer<char> owner(host);
    const auto screen = connection.screenNumber();
    return "X" + std::to_string(display) + (screen > 0 ? "_" + std::to_string(screen) : "");
}

} // namespace

X11Backend::X11Backend(Connection &connection, SingleInstance &instance,
                       freedesktop::GlibMainLoop &mainLoop, Log &log, StartedBy startedBy,
                       std::function<void()> terminate)
    : mainLoop_(mainLoop)
    , log_(log)
    , userDefaults_(freedesktop::PropertyListUserDefaults::standardFile(), mainLoop, log)
    , mirror_(connection)
    , screens_(connection, mainLoop)
    , workspace_(connection, mirror_, log)
    , windowServer_(mirror_, screens_, workspace_)
    , desktopChanges_(mirror_, screens_, workspace_)
    , accessibility_(connection, mirror_)
    , overlayWindows_(
          connection, mirror_, screens_, [this] { return screens_.pointSpace(); }, mainLoop, log)
    , input_(
          connection, mirror_, screens_, [this] { return isActive(); }, mainLoop, log)
    , userNotifications_(mainLoop)
    , application_(instance, workspace_, std::move(terminate))
    , loginItem_(freedesktop::AutostartLoginItem::ofThisProgram())
    , loginItemLog_([&log](std::string_view line) { log.print("[Lumo] " + std::string(line)); })
    , sessionBus_(mainLoop)
    , remoteControl_(sessionBus_, nameOnBus(connection), startedBy)
    , statusItem_(connection, overlayWindows_.formats(), screens_, mainLoop, sessionBus_)
    , updates_(freedesktop::makeSystemUpdates(mainLoop)) {
}

bool X11Backend::isActive() const {
    const auto *front = workspace_.frontmostApplication();
    return front != nullptr &&
           front->processIdentifier == workspace_.ownApplication().processIdentifier;
}

Platform X11Backend::platform() {
    return {.accessibility = accessibility_,
            .application = application_,
            .applicationStrips = applicationStrips_,
            .eventMonitors = input_.eventMonitors(),
            .hotKeyService = input_.hotKeys(),
            .keyboard = input_.keyboard(),
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
            .capabilities = {.liveBackdrop = overlayWindows_.canDrawBackdrops(),
                             .globalKeyMonitors = input_.eventMonitors().canMonitorKeys(),
                             .permissionComesByItself = true,
                             .systemComponentsHaveNames = false,
                             .offersItself = false,
                             .updates = freedesktop::hasSystemUpdates},
            .desktopChanges = &desktopChanges_,
            .remoteControl = &remoteControl_};
}

} // namespace lumo::x11
