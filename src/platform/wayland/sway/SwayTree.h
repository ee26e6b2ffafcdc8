#pragma once

#include "platform/wayland/windows/AskingPace.h"
#include "platform/wayland/windows/DesktopState.h"

#include <optional>
#include <string_view>

namespace lumo::wayland::sway {

// What sway's tree, as its IPC writes it, says about the desktop; absent when it can't be read.
//
// A display's usable area is that of the workspace it shows. A container's rectangle leaves out its
// title bar, which is added.
std::optional<DesktopState> desktopOf(std::string_view tree);

// What could move without an event: sway announces neither what the pointer drags nor what a client
// does to its own size.
AskingPace::Movable movableOf(const DesktopState &state);

} // namespace lumo::wayland::sway
