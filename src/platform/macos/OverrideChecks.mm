#import "platform/macos/OverrideChecks.h"

#import "platform/macos/LumoAppearanceObserver.h"
#import "platform/macos/LumoApplicationDelegate.h"
#import "platform/macos/LumoNotificationPresenter.h"
#import "platform/macos/LumoOverlayWindow.h"
#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/OverrideClaims.h"
#include "support/Invariant.h"

#import <objc/runtime.h>

namespace lumo::macos {

namespace {

OverrideClaim overrides(Class type, SEL selector) {
    return {class_getName(type), sel_getName(selector), ""};
}

OverrideClaim answers(Class type, SEL selector, Protocol *protocol) {
    return {class_getName(type), sel_getName(selector), protocol_getName(protocol)};
}

std::vector<OverrideClaim> claims() {
    Class overlay = [LumoOverlayWindow class];
    Class appearance = [LumoAppearanceObserver class];
    Class application = [LumoApplicationDelegate class];
    Class presenter = [LumoNotificationPresenter class];
    return {
        overrides(overlay, @selector(initWithContentRect:styleMask:backing:defer:)),
            overrides(overlay, @selector(constrainFrameRect:toScreen:)),
            overrides(appearance, @selector(observeValueForKeyPath:ofObject:change:context:)),
            answers(application, @selector(applicationDidFinishLaunching:),
                    @protocol(NSApplicationDelegate)),
            answers(application, @selector(applicationWillTerminate:),
                    @protocol(NSApplicationDelegate)),
            answers(application, @selector(applicationShouldHandleReopen:hasVisibleWindows:),
                    @protocol(NSApplicationDelegate)),
            answers(presenter,
                    @selector(userNotificationCenter:
                             willPresentNotification:withCompletionHandler:),
                    @protocol(UNUserNotificationCenterDelegate)),
    };
}

// By the class itself, not by one that it inherits from.
bool isImplemented(const OverrideClaim &claim) {
    Class type = NSClassFromString(nativeString(claim.className));
    SEL selector = NSSelectorFromString(nativeString(claim.selector));
    Method own = class_getInstanceMethod(type, selector);
    return own != nullptr && own != class_getInstanceMethod(class_getSuperclass(type), selector);
}

bool isDeclaredByProtocol(const OverrideClaim &claim) {
    Protocol *protocol = NSProtocolFromString(nativeString(claim.protocol));
    SEL selector = NSSelectorFromString(nativeString(claim.selector));
    return protocol_getMethodDescription(protocol, selector, NO, YES).name != nullptr ||
           protocol_getMethodDescription(protocol, selector, YES, YES).name != nullptr;
}

bool isDeclaredByPlatform(const OverrideClaim &claim) {
    if (!claim.protocol.empty()) {
        return isDeclaredByProtocol(claim);
    }
    Class parent = class_getSuperclass(NSClassFromString(nativeString(claim.className)));
    return [parent instancesRespondToSelector:NSSelectorFromString(nativeString(claim.selector))];
}

} // namespace

void checkOverrides() {
    for (const auto &line : brokenClaims(claims(), isImplemented, isDeclaredByPlatform)) {
        fatal(line);
    }
}

} // namespace lumo::macos
