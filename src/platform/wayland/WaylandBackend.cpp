#include "platform/wayland/WaylandBackend.h"

#include "platform/freedesktop/DesktopVocabulary.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/SystemUpdates.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/windows/Compositor.h"
#include "platform/wayland/windows/DesktopState.h"
#include "platform/wayland/windows/WindowSource.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace lumo::wayland {

std::string nameOnBus() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment while threads run
    const char *display = std::getenv("WAYLAND_DISPLAY");
    auto name = std::filesystem::path(display != nullptr ? display : "").filename().string();
    for (auto &character : name) {
        const bool isAllowed = (character >= '0' && character <= '9') ||
                               (character >= 'a' && character <= 'z') ||
                               (character >= 'A' && character <= 'Z');
        character = isAllowed ? character : '_';
    }
    constexpr std::string_view usual = "wayland_";
    return "Wayland_" + (name.starts_with(usual) ? name.substr(usual.size()) : name);
}

WaylandBackend::WaylandBackend(Connection &connection, Compositor &compositor,
                               WaylandKeyboard &keyboard, freedesktop::SessionBus &sessionBus,
                               freedesktop::GlibMainLoop &mainLoop, Log &log, StartedBy startedBy,
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
    , remoteControl_(sessionBus, nameOnBus(), startedBy)
    , statusItem_(sessionBus, screens_)
    , updates_(freedesktop::makeSystemUpdates(mainLoop)) {
}

void WaylandBackend::preparePopover(const std::string &title, const StatusItemPlace &place,
                                    const Size &size, double cornerRadius) {
    overlayWindows_.setRounded(title, cornerRadius);
    const auto &outputs = screens_.outputs();
    const auto &screens = screens_.screens();
    if (outputs.empty()) {
        return;
    }
    const Rect point = {place.pointer.x, place.pointer.y - 1, 1, 1};
    const auto found = std::ranges::find_if(
        screens, [&](const Screen &screen) { return !screen.frame.intersection(point).isEmpty(); });
    const auto &output =
        outputs[found == screens.end() ? 0 : static_cast<std::size_t>(found - screens.begin())];
    const auto &usableAreas = compositor_.windows().state().usableAreas;
    const auto usable = usableAreas.find(output.name);
    compositor_.placeWindows(
        title,
        popoverArea(output.area, usable != usableAreas.end() ? usable->second : output.area,
                    static_cast<int>(size.width), static_cast<int>(size.height)),
        screens_.pointSpace().pixelsOfFrame(point));
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
                             .systemComponentsHaveNames = false,
                             .offersItself = false,
                             .updates = freedesktop::hasSystemUpdates,
                             .globalPointerMonitors = compositor_.tellsOfPointer()},
            .desktopChanges = &desktopChanges_,
            .remoteControl = &remoteControl_};
}

} // namespace lumo::wayland
