#include "platform/wayland/Compositors.h"

#include "platform/wayland/client/Connection.h"
#include "platform/wayland/client/Requirements.h"
#include "platform/wayland/kwin/KWinCompositor.h"
#include "platform/wayland/sway/SwayCompositor.h"
#include "support/Log.h"

namespace lumo::wayland {

std::unique_ptr<Compositor> findCompositor(Connection &connection, const WaylandKeyboard &keyboard,
                                           freedesktop::SessionBus &sessionBus,
                                           freedesktop::GlibMainLoop &mainLoop, const Log &log) {
    if (const auto problem = missingRequirement(connection)) {
        log.print(*problem);
        return nullptr;
    }
    if (auto sway = sway::SwayCompositor::find(connection, keyboard, mainLoop)) {
        return sway;
    }
    if (auto kwin = kwin::KWinCompositor::find(connection, sessionBus, keyboard)) {
        return kwin;
    }
    log.print(
        kwin::KWinCompositor::isAt(connection)
            ? "[Lumo] KWin tells of its windows only to programs whose desktop entry asks for "
              "it: install Lumo, or start it by ./dev run"
            : "[Lumo] " + connection.compositorName() +
                  " tells no program about its windows in a way that Lumo knows (the IPC of "
                  "sway, the protocol of KDE's KWin)");
    return nullptr;
}

} // namespace lumo::wayland
