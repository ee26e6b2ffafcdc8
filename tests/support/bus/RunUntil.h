#pragma once

#include "platform/freedesktop/GlibMainLoop.h"

#include <functional>

namespace lumo::freedesktop {

// Turns the loop until the condition holds; false when it does not within ten seconds.
bool runUntil(GlibMainLoop &loop, const std::function<bool()> &condition);

} // namespace lumo::freedesktop
