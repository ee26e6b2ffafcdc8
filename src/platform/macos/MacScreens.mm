#import "platform/macos/MacScreens.h"

#import "platform/macos/NativeValues.h"
#import "platform/macos/NotificationObserver.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace lumo::macos {

namespace {

std::optional<std::uint32_t> numberOf(NSScreen *screen) {
    id number = [screen.deviceDescription objectForKey:@"NSScreenNumber"];
    if (![number isKindOfClass:[NSNumber class]]) {
        return std::nullopt;
    }
    return [number unsignedIntValue];
}

} // namespace

MacScreens::MacScreens(MainLoop &mainLoop)
    : screens_(mainLoop) {
}

const std::vector<Screen> &MacScreens::screens() const {
    std::vector<Screen> screens;
    for (NSScreen *screen in [NSScreen screens]) {
        screens.push_back({numberOf(screen), rectOf(screen.frame), screen.backingScaleFactor});
    }
    return screens_.update(std::move(screens));
}

Handle MacScreens::onScreenParametersDidChange(std::function<void()> observer) {
    return observeNotification([NSNotificationCenter defaultCenter],
                               NSApplicationDidChangeScreenParametersNotification, nil,
                               std::move(observer));
}

} // namespace lumo::macos
