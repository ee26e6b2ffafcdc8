#pragma once

#include "platform/Platform.h"
#include "platform/UpdateFramework.h"
#include "platform/freedesktop/AutostartLoginItem.h"
#include "platform/freedesktop/DesktopNotifications.h"
#include "platform/freedesktop/NoApplicationStrips.h"
#include "platform/freedesktop/PropertyListUserDefaults.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/freedesktop/SessionBusControl.h"
#include "platform/x11/X11Application.h"
#include "platform/x11/X11OverlayWindows.h"
#include "platform/x11/X11StatusItem.h"
#include "platform/x11/input/X11Input.h"
#include "platform/x11/server/X11Screens.h"
#include "platform/x11/windows/WindowMirror.h"
#include "platform/x11/windows/X11Accessibility.h"
#include "platform/x11/windows/X11DesktopChanges.h"
#include "platform/x11/windows/X11WindowServer.h"
#include "platform/x11/windows/X11Workspace.h"
#include "support/Log.h"

#include <functional>
#include <memory>

namespace lumo::x11 {

class Connection;
class SingleInstance;

// Every interface of the platform, on one X display. Main thread only; making it waits for the
// server.
class X11Backend {
  public:
    // The arguments must outlive the backend. The function ends the program.
    X11Backend(Connection &connection, SingleInstance &instance,
               freedesktop::GlibMainLoop &mainLoop, Log &log, StartedBy startedBy,
               std::function<void()> terminate);

    // What the program is given. Valid as long as the backend.
    Platform platform();

    X11Input &input() { return input_; }

    // The toolkit has made this window.
    void noteInterfaceWindow(std::uintptr_t window) {
        mirror_.setInterfaceWindow(static_cast<xcb_window_t>(window));
    }

    // Whether a compositing manager does the blending at the moment.
    bool isCompositing() const { return overlayWindows_.isCompositing(); }

    freedesktop::SessionBus &sessionBus() { return sessionBus_; }

  private:
    bool isActive() const;

    MainLoop &mainLoop_;
    Log &log_;
    freedesktop::PropertyListUserDefaults userDefaults_;
    freedesktop::NoApplicationStrips applicationStrips_;
    WindowMirror mirror_;
    X11Screens screens_;
    X11Workspace workspace_;
    X11WindowServer windowServer_;
    X11DesktopChanges desktopChanges_;
    X11Accessibility accessibility_;
    X11OverlayWindows overlayWindows_;
    X11Input input_;
    freedesktop::DesktopNotifications userNotifications_;
    X11Application application_;
    freedesktop::AutostartLoginItem loginItem_;
    Log loginItemLog_;
    freedesktop::SessionBus sessionBus_;
    freedesktop::SessionBusControl remoteControl_;
    X11StatusItem statusItem_;
    std::unique_ptr<UpdateFramework> updates_;
};

} // namespace lumo::x11
