#include "RunDelegate.h"

#include "app/AppDelegate.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/MemoryTrim.h"
#include "platform/freedesktop/PortalAppearance.h"
#include "ui/QtInterface.h"

#include <csignal>
#include <utility>

namespace lumo {

int runDelegate(freedesktop::GlibMainLoop &loop, freedesktop::SessionBus &sessionBus,
                const Platform &platform, ToolkitHooks hooks) {
    const auto interrupt = loop.onUnixSignal(SIGINT, [&] { loop.quit(0); });
    const auto terminate = loop.onUnixSignal(SIGTERM, [&] { loop.quit(0); });
    const auto hangUp = loop.onUnixSignal(SIGHUP, [&] { loop.quit(0); });
    freedesktop::PortalAppearance appearance(sessionBus);
    hooks.noteUnused = freedesktop::trimMemory;
    hooks.appearance = &appearance;
    QtInterface userInterface(platform, std::move(hooks));
    AppDelegate delegate(platform, userInterface);
    delegate.applicationDidFinishLaunching();
    return loop.run();
}

} // namespace lumo
