#include "platform/wayland/client/Requirements.h"

#include "platform/wayland/client/Connection.h"

#include <layer-shell-client-protocol.h>
#include <viewporter-client-protocol.h>
#include <xdg-output-unstable-v1-client-protocol.h>

#include <array>
#include <cstdlib>

namespace lumo::wayland {

std::optional<std::string> missingRequirement(const Connection &connection) {
    // What an overlay is made of, the least replaceable first.
    const std::array needed = {&zwlr_layer_shell_v1_interface, &wl_compositor_interface,
                               &wl_shm_interface, &wp_viewporter_interface,
                               &zxdg_output_manager_v1_interface};
    for (const auto *interface : needed) {
        if (!connection.offers(*interface)) {
            // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment meanwhile
            const bool hasXwayland = std::getenv("DISPLAY") != nullptr;
            return "[Lumo] " + connection.compositorName() +
                   " lets no program draw over windows (" + interface->name + " is missing)" +
                   (hasXwayland ? ", and its Xwayland shows only some of them" : "") +
                   ": Lumo needs an X11 session, or another compositor";
        }
    }
    return std::nullopt;
}

} // namespace lumo::wayland
