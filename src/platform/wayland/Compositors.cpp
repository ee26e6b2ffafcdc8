#include "platform/wayland/Compositors.h"

#include "platform/wayland/client/Connection.h"
#include "platform/wayland/client/Requirements.h"
#include "platform/wayland/sway/SwayCompositor.h"
#include "support/Log.h"

namespace lumo::wayland {

std::unique_ptr<Compositor> findCompositor(const Connection &connection,
                                           freedesktop::GlibMainLoop &mainLoop, const Log &log) {
    if (const auto problem = missingRequirement(connection)) {
        log.print(*problem);
        return nullptr;
    }
    if (auto sway = sway::SwayCompositor::find(connection, mainLoop)) {
        return sway;
    }
    log.print("[Lumo] " + connection.compositorName() +
              " tells no program about its windows in a way that Lumo knows (the IPC of sway)");
    return nullptr;
}

} // namespace lumo::wayland
