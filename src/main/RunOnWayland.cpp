#include "RunOnWayland.h"

#include "RunDelegate.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/RunningInstance.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/wayland/Compositors.h"
#include "platform/wayland/WaylandBackend.h"
#include "platform/wayland/client/Connection.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/windows/Compositor.h"
#include "support/Log.h"
#include "ui/QtInterface.h"

#include <cstdlib>
#include <functional>
#include <mutex>
#include <utility>

namespace lumo {

namespace {

ToolkitHooks hooksOf(wayland::WaylandBackend &backend, freedesktop::GlibMainLoop &loop,
                     std::function<void()> lose) {
    ToolkitHooks hooks;
    hooks.windowSystem = "wayland";
    hooks.turnLoopBy = [&loop](auto turn) { return loop.turnBy(std::move(turn)); };
    hooks.noteDesktopLost = std::move(lose);
    hooks.handleKeyPress = [&backend](auto keycode, auto modifiers) {
        return backend.eventMonitors().handleKeyPress(keycode, modifiers);
    };
    hooks.preparePopover = [&backend](const auto &title, const auto &place, const auto &size,
                                      double cornerRadius) {
        backend.preparePopover(title, place, size, cornerRadius);
    };
    hooks.blendsWindows = [] { return true; };
    return hooks;
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
    // First of all: what a compositor has for this program, it has once.
    if (freedesktop::giveWayToRunningInstance(sessionBus, wayland::nameOnBus())) {
        log.print("[Lumo] already running on this display");
        return 0;
    }
    const auto compositor = wayland::findCompositor(*connection, keyboard, sessionBus, loop, log);
    if (!compositor) {
        return 1;
    }
    wayland::WaylandBackend backend(*connection, *compositor, keyboard, sessionBus, loop, log,
                                    startedBy, [&loop] { loop.quit(0); });
    // The toolkit may see it first, in a thread of its own, and ends the program at once.
    std::once_flag isLost;
    const auto lose = [&] {
        std::call_once(isLost,
                       [&] { log.print("[Lumo] the connection to the compositor was lost"); });
        loop.quit(1);
    };
    const auto connectionWatch = connection->run(loop, lose);
    const auto compositorWatch = compositor->onLost(lose);
    return runDelegate(loop, sessionBus, backend.platform(), hooksOf(backend, loop, lose));
}

} // namespace lumo
