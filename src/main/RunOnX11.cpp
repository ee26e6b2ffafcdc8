#include "RunOnX11.h"

#include "RunDelegate.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/X11Backend.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/ServerRequirements.h"
#include "platform/x11/server/SingleInstance.h"
#include "support/Log.h"
#include "ui/QtInterface.h"

#include <utility>

namespace lumo {

namespace {

ToolkitHooks hooksOf(x11::X11Backend &backend) {
    ToolkitHooks hooks;
    hooks.windowSystem = "xcb";
    hooks.handleNativeEvent = [&backend](const void *event) {
        return backend.input().handleToolkitEvent(*static_cast<const xcb_generic_event_t *>(event));
    };
    hooks.noteWindow = [&backend](auto window) { backend.noteInterfaceWindow(window); };
    hooks.blendsWindows = [&backend] { return backend.isCompositing(); };
    hooks.watchButtons = [&backend](auto observer) {
        return backend.input().eventMonitors().addButtonMonitor(std::move(observer));
    };
    return hooks;
}

} // namespace

int runOnX11(freedesktop::GlibMainLoop &loop, Log &log, StartedBy startedBy) {
    const auto connection = x11::Connection::open(nullptr);
    if (!connection) {
        log.print("[Lumo] no display answers: set WAYLAND_DISPLAY, or DISPLAY for an X server, to "
                  "the one that Lumo is to run on");
        return 1;
    }
    if (const auto problem = x11::missingRequirement(*connection)) {
        log.print(*problem);
        return 1;
    }
    const auto instance = x11::SingleInstance::claim(*connection);
    if (!instance) {
        log.print("[Lumo] already running on this display");
        return 0;
    }
    for (const auto &line : x11::limitations(*connection)) {
        log.print(line);
    }
    x11::X11Backend backend(*connection, *instance, loop, log, startedBy,
                            [&loop] { loop.quit(0); });
    const auto connectionWatch = x11::watch(loop, *connection, [&] {
        log.print("[Lumo] the connection to the X server was lost");
        loop.quit(1);
    });
    return runDelegate(loop, backend.sessionBus(), backend.platform(), hooksOf(backend));
}

} // namespace lumo
