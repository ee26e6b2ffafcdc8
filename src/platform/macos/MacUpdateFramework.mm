#import "platform/macos/MacUpdateFramework.h"

#include <utility>

// What the framework's class answers, declared here since the framework is not there when the
// program is built.
@protocol LumoUpdaterController <NSObject>
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@end

namespace lumo::macos {

namespace {

// Nil when the framework is not in the bundle.
Class updaterControllerClass() {
    NSString *folder = [[NSBundle mainBundle] privateFrameworksPath];
    NSString *path = [folder stringByAppendingPathComponent:@"Sparkle.framework"];
    if (path == nil || ![[NSBundle bundleWithPath:path] load]) {
        return Nil;
    }
    return NSClassFromString(@"SPUStandardUpdaterController");
}

} // namespace

MacUpdateFramework::MacUpdateFramework(MainLoop &mainLoop)
    : mainLoop_(mainLoop) {
}

bool MacUpdateFramework::isAvailable() {
    return updaterControllerClass() != Nil;
}

void MacUpdateFramework::startUpdater() {
    id<LumoUpdaterController> controller = [updaterControllerClass() alloc];
    updaterController_ = [controller initWithStartingUpdater:YES
                                             updaterDelegate:nil
                                          userDriverDelegate:nil];
}

void MacUpdateFramework::checkForUpdates(std::function<void(const UpdateResult &)> completion) {
    if (updaterController_ == nil) {
        mainLoop_.post(lifetime_.guard([completion = std::move(completion)] {
            completion({.kind = UpdateResult::Kind::serviceUnavailable, .version = {}});
        }));
        return;
    }
    [static_cast<id<LumoUpdaterController>>(updaterController_) checkForUpdates:nil];
}

} // namespace lumo::macos
