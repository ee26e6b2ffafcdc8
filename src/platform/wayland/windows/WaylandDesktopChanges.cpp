#include "platform/wayland/windows/WaylandDesktopChanges.h"

#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/windows/WaylandWorkspace.h"
#include "platform/wayland/windows/WindowSource.h"

#include <utility>

namespace lumo::wayland {

WaylandDesktopChanges::WaylandDesktopChanges(WindowSource &source, WaylandScreens &screens,
                                             WaylandWorkspace &workspace)
    : sources_{source.onChange([this] { changed_.emit(); }),
               screens.onScreenParametersDidChange([this] { changed_.emit(); }),
               workspace.onEntriesDidChange([this] { changed_.emit(); })} {
}

Handle WaylandDesktopChanges::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

} // namespace lumo::wayland
