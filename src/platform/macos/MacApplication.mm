#import "platform/macos/MacApplication.h"

#import "platform/macos/LumoApplicationDelegate.h"

#include <utility>

@implementation LumoApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification *)notification {
    onDidFinishLaunching();
}

- (void)applicationWillTerminate:(NSNotification *)notification {
    onWillTerminate();
}

- (BOOL)applicationShouldHandleReopen:(NSApplication *)sender
                    hasVisibleWindows:(BOOL)hasVisibleWindows {
    onReopen();
    return NO;
}

@end

namespace lumo::macos {

static_assert(NSApplicationActivationPolicyAccessory == 1);

namespace {

NSApplicationActivationPolicy nativePolicy(ActivationPolicy policy) {
    switch (policy) {
    case ActivationPolicy::regular:
        return NSApplicationActivationPolicyRegular;
    case ActivationPolicy::accessory:
        return NSApplicationActivationPolicyAccessory;
    case ActivationPolicy::prohibited:
        break;
    }
    return NSApplicationActivationPolicyProhibited;
}

} // namespace

MacApplication::MacApplication(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , delegate_([[LumoApplicationDelegate alloc] init]) {
    delegate_->onReopen = [this] { reopened_.emit(); };
    [NSApplication sharedApplication].delegate = delegate_;
}

MacApplication::~MacApplication() {
    [NSApplication sharedApplication].delegate = nil;
}

void MacApplication::run(std::function<void()> didFinishLaunching,
                         std::function<void()> willTerminate) {
    delegate_->onDidFinishLaunching = std::move(didFinishLaunching);
    delegate_->onWillTerminate = std::move(willTerminate);
    [[NSApplication sharedApplication] run];
}

void MacApplication::setActivationPolicy(ActivationPolicy policy) {
    [[NSApplication sharedApplication] setActivationPolicy:nativePolicy(policy)];
}

void MacApplication::activateIgnoringOtherApps() {
    [[NSApplication sharedApplication] activateIgnoringOtherApps:YES];
}

void MacApplication::terminate() {
    mainLoop_.post([] { [[NSApplication sharedApplication] terminate:nil]; });
}

Handle MacApplication::onReopen(std::function<void()> observer) {
    return reopened_.subscribe(std::move(observer));
}

} // namespace lumo::macos
