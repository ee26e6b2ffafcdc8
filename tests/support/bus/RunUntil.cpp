#include "bus/RunUntil.h"

#include <glib.h>

namespace lumo::freedesktop {

bool runUntil(GlibMainLoop &loop, const std::function<bool()> &condition) {
    bool isTimeUp = false;
    const auto looks = loop.every(0.01, [] {});
    const auto deadline = loop.after(10, [&] { isTimeUp = true; });
    while (!condition() && !isTimeUp) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !isTimeUp;
}

} // namespace lumo::freedesktop
