// AppKit: what GNUstep declares, completed by what it lacks of what Lumo uses.
#pragma once

#include_next <AppKit/AppKit.h>
#include <AssertMacros.h>
#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#import <QuartzCore/QuartzCore.h>

NS_ASSUME_NONNULL_BEGIN

enum LUMO_SINCE(10.12) : NSEventMask {
    NSEventMaskRightMouseUp = 1ULL << 4,
    NSEventMaskMouseMoved = 1ULL << 5,
    NSEventMaskLeftMouseDragged = 1ULL << 6,
    NSEventMaskRightMouseDragged = 1ULL << 7,
    NSEventMaskKeyDown = 1ULL << 10,
    NSEventMaskFlagsChanged = 1ULL << 12,
    NSEventMaskOtherMouseDragged = 1ULL << 27,
};

enum LUMO_SINCE(10.12) : NSUInteger {
    NSEventModifierFlagCapsLock = 1UL << 16,
    NSEventModifierFlagShift = 1UL << 17,
    NSEventModifierFlagControl = 1UL << 18,
    NSEventModifierFlagOption = 1UL << 19,
    NSEventModifierFlagCommand = 1UL << 20,
    NSEventModifierFlagDeviceIndependentFlagsMask = 0xffff0000UL,
};

enum LUMO_SINCE(10.7) NSWindowAnimationBehavior : NSInteger {
    NSWindowAnimationBehaviorDefault = 0,
    NSWindowAnimationBehaviorNone = 2,
};

enum LUMO_SINCE(10.10) NSWindowTitleVisibility : NSInteger {
    NSWindowTitleVisible = 0,
    NSWindowTitleHidden = 1,
};

extern "C" {
extern NSNotificationName const NSWorkspaceDidActivateApplicationNotification LUMO_SINCE(10.6);
extern NSNotificationName const NSWorkspaceActiveSpaceDidChangeNotification LUMO_SINCE(10.6);
}

@interface NSApplication (LumoCompletion)
@property(readonly, strong) NSAppearance *effectiveAppearance LUMO_SINCE(10.14);
- (void)activate LUMO_SINCE(14.0);
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy LUMO_SINCE(10.6);
@end

@interface NSColor (LumoCompletion)
@property(readonly) CGColorRef CGColor LUMO_SINCE(10.8);
@end

@interface NSEvent (LumoCompletion)
+ (nullable id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask
                                             handler:(void (^)(NSEvent *event))block
    LUMO_SINCE(10.6);
+ (nullable id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask
                                            handler:(NSEvent *_Nullable (^)(NSEvent *event))block
    LUMO_SINCE(10.6);
+ (void)removeMonitor:(id)monitor LUMO_SINCE(10.6);
@end

@interface NSFont (LumoCompletion)
+ (NSFont *)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight LUMO_SINCE(10.11);
@end

@interface NSPopover (LumoCompletion)
@property(readonly, getter=isShown) BOOL shown LUMO_SINCE(10.7);
@end

@interface NSButton (LumoCompletion)
@property(nullable, copy) NSColor *contentTintColor LUMO_SINCE(10.14);
@end

@interface NSStatusItem (LumoCompletion)
@property(nullable, readonly, strong) NSStatusBarButton *button LUMO_SINCE(10.10);
@end

@interface NSView (LumoCompletion)
@property BOOL wantsLayer LUMO_SINCE(10.5);
@property(nullable, strong) CALayer *layer LUMO_SINCE(10.5);
@end

@interface NSWindow (LumoCompletion)
@property(readonly, getter=isVisible) BOOL visible LUMO_SINCE(10.0);
@property NSWindowAnimationBehavior animationBehavior LUMO_SINCE(10.7);
@property BOOL titlebarAppearsTransparent LUMO_SINCE(10.10);
@property NSWindowTitleVisibility titleVisibility LUMO_SINCE(10.10);
@end

NS_ASSUME_NONNULL_END
