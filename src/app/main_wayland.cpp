#include "app/main_wayland.h"

#include "app/AppDelegate.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/MemoryTrim.h"
#include "platform/freedesktop/PortalAppearance.h"
#include "platform/freedesktop/RunningInstance.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/wayland/Compositors.h"
#include "platform/wayland/WaylandBackend.h"
#include "platform/wayland/client/Connection.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/windows/Compositor.h"
#include "support/Log.h"
#include "ui/QtInterface.h"

#include <csignal>
#include <cstdlib>
#include <utility>

namespace lumo {

namespace {

// Runs the program until it is quit, or a signal or the loss of the compositor ends it; gives the
// exit status.
int runDelegate(freedesktop::GlibMainLoop &loop, wayland::Connection &connection,
                wayland::Compositor &compositor, freedesktop::SessionBus &sessionBus,
                wayland::WaylandBackend &backend) {
    const auto platform = backend.platform();
    bool isLost = false;
    const auto lose = [&] {
        if (!isLost) {
            isLost = true;
            platform.log.print("[Lumo] the connection to the compositor was lost");
        }
        loop.quit(1);
    };
    const auto connectionWatch = connection.run(loop, lose);
    const auto compositorWatch = compositor.onLost(lose);
    const auto interrupt = loop.onUnixSignal(SIGINT, [&] { loop.quit(0); });
    const auto terminate = loop.onUnixSignal(SIGTERM, [&] { loop.quit(0); });
    const auto hangUp = loop.onUnixSignal(SIGHUP, [&] { loop.quit(0); });
    freedesktop::PortalAppearance appearance(sessionBus);
    ToolkitHooks hooks;
    hooks.windowSystem = "wayland";
    hooks.turnLoopBy = [&loop](auto turn) { return loop.turnBy(std::move(turn)); };
    hooks.noteDesktopLost = lose;
    hooks.handleKeyPress = [&backend](auto keycode, auto modifiers) {
        return backend.eventMonitors().handleKeyPress(keycode, modifiers);
    };
    hooks.preparePopover = [&backend](const auto &title, const auto &place, const auto &size) {
        backend.preparePopover(title, place, size);
    };
    hooks.blendsWindows = [] { return true; };
    hooks.noteUnused = freedesktop::trimMemory;
    hooks.appearance = &appearance;
    QtInterface userInterface(platform, std::move(hooks));
    AppDelegate delegate(platform, userInterface);
    delegate.applicationDidFinishLaunching();
    return loop.run();
}

} // namespace

std::optional<int> runOnWayland(freedesktop::GlibMainLoop &loop, Log &log, StartedBy startedBy) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before there are other threads
    if (std::getenv("WAYLAND_DISPLAY") == nullptr) {
        return std::nullopt;
    }
    const auto connection = wayland::Connection::open();
    if (!connection) {
        return std::nullopt;
    }
    wayland::WaylandKeyboard keyboard(*connection);
    freedesktop::SessionBus sessionBus(loop);
    const auto compositor = wayland::findCompositor(*connection, keyboard, sessionBus, loop, log);
    if (!compositor) {
        return 1;
    }
    if (freedesktop::giveWayToRunningInstance(sessionBus, wayland::nameOnBus())) {
        log.print("[Lumo] already running on this display");
        return 0;
    }
    wayland::WaylandBackend backend(*connection, *compositor, keyboard, sessionBus, loop, log,
                                    startedBy, [&loop] { loop.quit(0); });
    return runDelegate(loop, *connection, *compositor, sessionBus, backend);
}

} // namespace lumo
