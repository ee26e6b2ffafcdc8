#pragma once

#include "platform/Platform.h"
#include "platform/macos/MacAccessibility.h"
#include "platform/macos/MacAppearance.h"
#include "platform/macos/MacApplication.h"
#include "platform/macos/MacApplicationStrips.h"
#include "platform/macos/MacEventMonitors.h"
#include "platform/macos/MacHotKeys.h"
#include "platform/macos/MacLoginItem.h"
#include "platform/macos/MacMainLoop.h"
#include "platform/macos/MacOverlayWindows.h"
#include "platform/macos/MacScreens.h"
#include "platform/macos/MacStatusItem.h"
#include "platform/macos/MacUpdateFramework.h"
#include "platform/macos/MacUserDefaults.h"
#include "platform/macos/MacUserNotifications.h"
#include "platform/macos/MacViewHost.h"
#include "platform/macos/MacWindowServer.h"
#include "platform/macos/MacWorkspace.h"
#include "platform/macos/logic/AnsiKeyboard.h"
#include "support/Log.h"

namespace lumo::macos {

// Every interface of the platform on the Mac. Main thread only.
class MacBackend {
  public:
    // The log outlives the backend.
    explicit MacBackend(Log &log);

    // What the program is given. Valid as long as the backend.
    Platform platform();

    Appearance &appearance() { return appearance_; }
    MacApplication &application() { return application_; }
    MacMainLoop &mainLoop() { return mainLoop_; }
    ViewHost &viewHost() { return viewHost_; }

  private:
    Log &log_;
    MacMainLoop mainLoop_;
    MacApplication application_;
    MacAppearance appearance_;
    MacUserDefaults userDefaults_;
    MacApplicationStrips applicationStrips_;
    MacScreens screens_;
    MacWorkspace workspace_;
    MacWindowServer windowServer_;
    MacAccessibility accessibility_;
    MacOverlayWindows overlayWindows_;
    MacEventMonitors eventMonitors_;
    MacHotKeys hotKeys_;
    AnsiKeyboard keyboard_;
    MacUserNotifications userNotifications_;
    MacLoginItem loginItem_;
    Log loginItemLog_;
    MacStatusItem statusItem_;
    MacViewHost viewHost_;
    MacUpdateFramework updateFramework_;
};

} // namespace lumo::macos
