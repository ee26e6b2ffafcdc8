#pragma once

#include "platform/freedesktop/GlibMainLoop.h"

#include <functional>

namespace lumo::freedesktop {

// Turns the loop until the condition holds; false when it does not within so many seconds.
bool runUntil(GlibMainLoop &loop, const std::function<bool()> &condition, double seconds = 10);

} // namespace lumo::freedesktop
