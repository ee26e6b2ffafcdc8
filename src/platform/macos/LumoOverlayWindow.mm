#import "platform/macos/LumoOverlayWindow.h"

@implementation LumoOverlayWindow

- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)styleMask
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
    return [super initWithContentRect:contentRect styleMask:styleMask backing:backing defer:defer];
}

// The platform would pull the frame into the area that menu bar and dock leave free.
- (NSRect)constrainFrameRect:(NSRect)frameRect toScreen:(nullable NSScreen *)screen {
    return frameRect;
}

@end
