#pragma once

#import <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

// The window of one overlay: takes its frame as it is, so that it covers the menu bar and the dock
// as well.
@interface LumoOverlayWindow : NSWindow

- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)styleMask
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;

- (NSRect)constrainFrameRect:(NSRect)frameRect toScreen:(nullable NSScreen *)screen;

@end

NS_ASSUME_NONNULL_END
