#pragma once

#include "platform/Platform.h"
#include "platform/UpdateFramework.h"
#include "platform/freedesktop/AutostartLoginItem.h"
#include "platform/freedesktop/DesktopNotifications.h"
#include "platform/freedesktop/NoApplicationStrips.h"
#include "platform/freedesktop/PropertyListUserDefaults.h"
#include "platform/freedesktop/SessionBusControl.h"
#include "platform/wayland/WaylandApplication.h"
#include "platform/wayland/WaylandEventMonitors.h"
#include "platform/wayland/WaylandStatusItem.h"
#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/overlay/WaylandOverlayWindows.h"
#include "platform/wayland/windows/WaylandAccessibility.h"
#include "platform/wayland/windows/WaylandDesktopChanges.h"
#include "platform/wayland/windows/WaylandWindowServer.h"
#include "platform/wayland/windows/WaylandWorkspace.h"
#include "support/Log.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo::freedesktop {
class GlibMainLoop;
class SessionBus;
} // namespace lumo::freedesktop

namespace lumo::wayland {

class Compositor;
class Connection;
class WaylandKeyboard;

// What tells this display from others of the session on its bus: "Wayland_1" for wayland-1.
std::string nameOnBus();

// Every interface of the platform, on one Wayland compositor. Main thread only; making it waits for
// the compositor.
class WaylandBackend {
  public:
    // The arguments must outlive the backend. The function ends the program.
    WaylandBackend(Connection &connection, Compositor &compositor, WaylandKeyboard &keyboard,
                   freedesktop::SessionBus &sessionBus, freedesktop::GlibMainLoop &mainLoop,
                   Log &log, StartedBy startedBy, std::function<void()> terminate);

    // What the program is given. Valid as long as the backend.
    Platform platform();

    // Has a window of that title, and of that size and radius of its corners in points, come up at
    // the panel of the display on which the status item is: in the corner where panels have such
    // items.
    void preparePopover(const std::string &title, const StatusItemPlace &place, const Size &size,
                        double cornerRadius);

    WaylandEventMonitors &eventMonitors() { return eventMonitors_; }

  private:
    MainLoop &mainLoop_;
    Log &log_;
    Compositor &compositor_;
    WaylandKeyboard &keyboard_;
    freedesktop::PropertyListUserDefaults userDefaults_;
    freedesktop::NoApplicationStrips applicationStrips_;
    WaylandScreens screens_;
    WaylandWorkspace workspace_;
    WaylandWindowServer windowServer_;
    WaylandDesktopChanges desktopChanges_;
    WaylandAccessibility accessibility_;
    WaylandOverlayWindows overlayWindows_;
    WaylandEventMonitors eventMonitors_;
    freedesktop::DesktopNotifications userNotifications_;
    WaylandApplication application_;
    freedesktop::AutostartLoginItem loginItem_;
    Log loginItemLog_;
    freedesktop::SessionBusControl remoteControl_;
    WaylandStatusItem statusItem_;
    std::unique_ptr<UpdateFramework> updates_;
};

} // namespace lumo::wayland
