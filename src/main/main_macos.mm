#include "app/AppDelegate.h"
#import "platform/macos/MacBackend.h"
#include "platform/posix/LineOutput.h"
#include "support/Log.h"
#include "ui/QtInterface.h"

#include <QCoreApplication>
#include <csignal>
#include <optional>

int main() {
    @autoreleasepool {
        std::signal(SIGPIPE, SIG_IGN); // what reads the log may end first
        auto log = lumo::posix::standardOutputLog();
        lumo::macos::MacBackend backend(log);
        const auto platform = backend.platform();
        // The toolkit turns with the application object's loop and leaves its delegate, its menus
        // and its activation policy alone.
        QCoreApplication::setAttribute(Qt::AA_PluginApplication);
        qputenv("QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM", "1");
        lumo::QtInterface userInterface(
            platform, {.appearance = &backend.appearance(), .viewHost = &backend.viewHost()});
        std::optional<lumo::AppDelegate> delegate;
        auto &application = backend.application();
        auto &mainLoop = backend.mainLoop();
        const auto interrupt = mainLoop.onUnixSignal(SIGINT, [&] { application.terminate(); });
        const auto terminate = mainLoop.onUnixSignal(SIGTERM, [&] { application.terminate(); });
        const auto hangUp = mainLoop.onUnixSignal(SIGHUP, [&] { application.terminate(); });
        application.run(
            [&] {
                delegate.emplace(platform, userInterface);
                delegate->applicationDidFinishLaunching();
            },
            [&] {
                if (delegate) {
                    delegate->applicationWillTerminate();
                }
            });
        return 0;
    }
}
