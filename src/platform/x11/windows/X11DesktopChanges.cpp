#include "platform/x11/windows/X11DesktopChanges.h"

#include "platform/x11/server/X11Screens.h"
#include "platform/x11/windows/WindowMirror.h"
#include "platform/x11/windows/X11Workspace.h"

#include <utility>

namespace lumo::x11 {

X11DesktopChanges::X11DesktopChanges(WindowMirror &mirror, X11Screens &screens,
                                     X11Workspace &workspace)
    : sources_{mirror.onChange([this](const auto &) { changed_.emit(); }),
               screens.onScreenParametersDidChange([this] { changed_.emit(); }),
               workspace.onEntriesDidChange([this] { changed_.emit(); })} {
}

Handle X11DesktopChanges::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

} // namespace lumo::x11
