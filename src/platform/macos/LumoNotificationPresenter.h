#pragma once

#import <UserNotifications/UserNotifications.h>

// Has the program's notifications shown while the program is the active one as well, when the
// system would only list them.
@interface LumoNotificationPresenter : NSObject <UNUserNotificationCenterDelegate>
@end
