#include "bus/RunUntil.h"

#include <glib.h>

namespace lumo::freedesktop {

bool runUntil(GlibMainLoop &loop, const std::function<bool()> &condition, double seconds) {
    bool isTimeUp = false;
    const auto looks = loop.every(0.005, [] {});
    const auto deadline = loop.after(seconds, [&] { isTimeUp = true; });
    while (!condition() && !isTimeUp) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !isTimeUp;
}

} // namespace lumo::freedesktop
