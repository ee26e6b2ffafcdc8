#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/main_wayland.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/MemoryTrim.h"
#include "platform/freedesktop/PortalAppearance.h"
#include "platform/posix/LineOutput.h"
#include "platform/x11/X11Backend.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/ServerRequirements.h"
#include "platform/x11/server/SingleInstance.h"
#include "support/Log.h"
#include "ui/QtInterface.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <variant>

namespace {

// Runs the program until it is quit, or a signal or the loss of the display ends it; gives the exit
// status.
int runDelegate(lumo::freedesktop::GlibMainLoop &loop, lumo::x11::Connection &connection,
                lumo::x11::X11Backend &backend) {
    const auto platform = backend.platform();
    const auto connectionWatch = lumo::x11::watch(loop, connection, [&] {
        platform.log.print("[Lumo] the connection to the X server was lost");
        loop.quit(1);
    });
    const auto interrupt = loop.onUnixSignal(SIGINT, [&] { loop.quit(0); });
    const auto terminate = loop.onUnixSignal(SIGTERM, [&] { loop.quit(0); });
    const auto hangUp = loop.onUnixSignal(SIGHUP, [&] { loop.quit(0); });
    lumo::freedesktop::PortalAppearance appearance(backend.sessionBus());
    lumo::QtInterface userInterface(
        platform,
        {.windowSystem = "xcb",
         .handleNativeEvent =
             [&backend](const void *event) {
                 return backend.input().handleToolkitEvent(
                     *static_cast<const xcb_generic_event_t *>(event));
             },
         .noteWindow = [&backend](auto window) { backend.noteInterfaceWindow(window); },
         .blendsWindows = [&backend] { return backend.isCompositing(); },
         .watchButtons =
             [&backend](auto observer) {
                 return backend.input().eventMonitors().addButtonMonitor(std::move(observer));
             },
         .noteUnused = lumo::freedesktop::trimMemory,
         .appearance = &appearance});
    lumo::AppDelegate delegate(platform, userInterface);
    delegate.applicationDidFinishLaunching();
    return loop.run();
}

} // namespace

int main(int argumentCount, char **arguments) {
    const auto start =
        lumo::readCommandLine({arguments + std::min(argumentCount, 1), arguments + argumentCount});
    if (const auto *answer = std::get_if<lumo::CommandLineAnswer>(&start)) {
        (answer->status == 0 ? std::cout : std::cerr) << answer->line << std::endl;
        return answer->status;
    }
    const auto startedBy = std::get<lumo::StartedBy>(start);
    // The toolkit would have the session manager start the program anew at the next login, which
    // the user decides by the login item alone; nor does it heed when that asks it to end.
    unsetenv("SESSION_MANAGER");   // NOLINT(concurrency-mt-unsafe): before there are other threads
    std::signal(SIGPIPE, SIG_IGN); // what reads the log may end first
    auto log = lumo::posix::standardOutputLog(startedBy == lumo::StartedBy::user
                                                  ? lumo::Log::Detail::withDiagnostics
                                                  : lumo::Log::Detail::withoutDiagnostics);
    lumo::freedesktop::GlibMainLoop loop;
    if (const auto status = lumo::runOnWayland(loop, log, startedBy)) {
        return *status;
    }
    const auto connection = lumo::x11::Connection::open(nullptr);
    if (!connection) {
        log.print("[Lumo] no display answers: set WAYLAND_DISPLAY, or DISPLAY for an X server, to "
                  "the one that Lumo is to run on");
        return 1;
    }
    if (const auto problem = lumo::x11::missingRequirement(*connection)) {
        log.print(*problem);
        return 1;
    }
    const auto instance = lumo::x11::SingleInstance::claim(*connection);
    if (!instance) {
        log.print("[Lumo] already running on this display");
        return 0;
    }
    for (const auto &line : lumo::x11::limitations(*connection)) {
        log.print(line);
    }
    lumo::x11::X11Backend backend(*connection, *instance, loop, log, startedBy,
                                  [&loop] { loop.quit(0); });
    return runDelegate(loop, *connection, backend);
}
