// What Lumo uses of the notification centre.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger UNAuthorizationOptions;
enum LUMO_SINCE(10.14) : UNAuthorizationOptions {
    UNAuthorizationOptionBadge = 1 << 0,
    UNAuthorizationOptionSound = 1 << 1,
    UNAuthorizationOptionAlert = 1 << 2,
};

typedef NSUInteger UNNotificationPresentationOptions;
enum LUMO_SINCE(10.14) : UNNotificationPresentationOptions {
    UNNotificationPresentationOptionSound = 1 << 1,
    UNNotificationPresentationOptionList LUMO_SINCE(11.0) = 1 << 3,
    UNNotificationPresentationOptionBanner LUMO_SINCE(11.0) = 1 << 4,
};

LUMO_SINCE(10.14)
@interface UNNotificationSound : NSObject
@property(class, readonly, copy) UNNotificationSound *defaultSound;
@end

LUMO_SINCE(10.14)
@interface UNNotificationContent : NSObject
@end

LUMO_SINCE(10.14)
@interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString *title;
@property(copy) NSString *body;
@property(nullable, copy) UNNotificationSound *sound;
@end

LUMO_SINCE(10.14)
@interface UNNotificationTrigger : NSObject
@end

LUMO_SINCE(10.14)
@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString *)identifier
                              content:(UNNotificationContent *)content
                              trigger:(nullable UNNotificationTrigger *)trigger;
@end

LUMO_SINCE(10.14)
@interface UNNotification : NSObject
@end

@class UNUserNotificationCenter;

LUMO_SINCE(10.14)
@protocol UNUserNotificationCenterDelegate <NSObject>
@optional
- (void)userNotificationCenter:(UNUserNotificationCenter *)center
       willPresentNotification:(UNNotification *)notification
         withCompletionHandler:
             (void (^)(UNNotificationPresentationOptions options))completionHandler;
@end

LUMO_SINCE(10.14)
@interface UNUserNotificationCenter : NSObject
@property(nullable, weak) id<UNUserNotificationCenterDelegate> delegate;
+ (UNUserNotificationCenter *)currentNotificationCenter;
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:
                          (void (^)(BOOL granted, NSError *_Nullable error))completionHandler;
- (void)addNotificationRequest:(UNNotificationRequest *)request
         withCompletionHandler:(nullable void (^)(NSError *_Nullable error))completionHandler;
@end

NS_ASSUME_NONNULL_END
