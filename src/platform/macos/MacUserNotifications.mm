#import "platform/macos/MacUserNotifications.h"

#import "platform/macos/LumoNotificationPresenter.h"
#import "platform/macos/NativeValues.h"

#import <UserNotifications/UserNotifications.h>

#include <memory>
#include <utility>

@implementation LumoNotificationPresenter

- (void)userNotificationCenter:(UNUserNotificationCenter *)center
       willPresentNotification:(UNNotification *)notification
         withCompletionHandler:
             (void (^)(UNNotificationPresentationOptions options))completionHandler {
    completionHandler(UNNotificationPresentationOptionBanner |
                      UNNotificationPresentationOptionList | UNNotificationPresentationOptionSound);
}

@end

namespace lumo::macos {

namespace {

// Nil for a program without a bundle, for which asking would raise an exception.
UNUserNotificationCenter *notificationCentre() {
    return [[NSBundle mainBundle] bundleIdentifier] != nil
               ? [UNUserNotificationCenter currentNotificationCenter]
               : nil;
}

UNNotificationRequest *nativeRequest(const UserNotification &notification) {
    UNMutableNotificationContent *content = [[UNMutableNotificationContent alloc] init];
    content.title = nativeString(notification.title);
    content.body = nativeString(notification.body);
    content.sound = [UNNotificationSound defaultSound];
    return [UNNotificationRequest requestWithIdentifier:nativeString(notification.identifier)
                                                content:content
                                                trigger:nil];
}

} // namespace

MacUserNotifications::MacUserNotifications(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , presenter_([[LumoNotificationPresenter alloc] init]) {
}

void MacUserNotifications::add(
    const UserNotification &notification,
    std::function<void(const std::optional<std::string> &error)> completion) {
    using Result = std::optional<std::string>;
    // The lifetime belongs to the main thread; the centre answers on another.
    const auto guarded = std::make_shared<std::function<void(const Result &)>>(
        lifetime_.guard(std::move(completion)));
    const auto answer = [guarded, &mainLoop = mainLoop_](const Result &error) {
        mainLoop.post([guarded, error] { (*guarded)(error); });
    };
    UNUserNotificationCenter *centre = notificationCentre();
    if (centre == nil) {
        answer("the program is not started from its application bundle");
        return;
    }
    centre.delegate = presenter_;
    UNNotificationRequest *request = nativeRequest(notification);
    // Asks the user the first time only. A refusal comes back as the error of the request.
    [centre requestAuthorizationWithOptions:UNAuthorizationOptionAlert | UNAuthorizationOptionSound
                          completionHandler:^(BOOL, NSError *) {
                              [centre addNotificationRequest:request
                                       withCompletionHandler:^(NSError *error) {
                                           answer(optionalText(error.localizedDescription));
                                       }];
                          }];
}

} // namespace lumo::macos
