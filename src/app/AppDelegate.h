#pragma once

#include "app/AppController.h"
#include "platform/Platform.h"
#include "presentation/UserInterface.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <memory>
#include <optional>
#include <string>

namespace lumo {

struct RemoteRequest;

// The program from its start to its end: makes the controller, guides the user to the permission
// when that is needed first, and opens the windows. Main thread only.
class AppDelegate {
  public:
    // Both outlive the delegate.
    AppDelegate(const Platform &platform, UserInterface &userInterface);
    ~AppDelegate();
    AppDelegate(const AppDelegate &) = delete;
    AppDelegate &operator=(const AppDelegate &) = delete;

    void applicationDidFinishLaunching();

    // Takes the overlays off the screens. Part of destruction as well.
    void applicationWillTerminate();

    // The user has started the program once more. False: there is nothing left for the desktop to
    // do about it.
    bool applicationShouldHandleReopen();

    // Without a controller these do nothing.
    void openSettings();
    void showGuidanceWindow();

    // Null before the launch.
    AppController *appController() { return appController_.get(); }

  private:
    bool isPermitted() const;
    void awaitPermission();
    void endGuidance();
    void handleGuidanceWindowClosed();
    void beginAfterGuidance();
    std::optional<std::string> handleRequest(const RemoteRequest &request);
    SettingsModel settingsModel();

    Platform platform_;
    UserInterface &userInterface_;
    std::unique_ptr<AppController> appController_;
    std::unique_ptr<InterfaceWindow> settingsWindow_;
    std::unique_ptr<InterfaceWindow> guidanceWindow_;
    Handle permission_;
    Handle guidanceDelay_;
    Handle reopening_;
    Handle requests_;
    Lifetime lifetime_;
};

} // namespace lumo
