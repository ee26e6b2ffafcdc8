// What Lumo uses of Core Graphics.
#pragma once

#import <CoreFoundation/CoreFoundation.h>

typedef NSPoint CGPoint;
typedef NSSize CGSize;
typedef NSRect CGRect;

typedef struct CGColor *CGColorRef;
typedef struct CGColorSpace *CGColorSpaceRef;
typedef struct CGDataProvider *CGDataProviderRef;
typedef struct CGImage *CGImageRef;
typedef const struct CGPath *CGPathRef;
typedef struct CGPath *CGMutablePathRef;

struct CGAffineTransform {
    CGFloat a, b, c, d, tx, ty;
};

typedef uint32_t CGBitmapInfo;
enum LUMO_SINCE(10.0) CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNone = 0,
    kCGImageAlphaPremultipliedLast = 1,
    kCGImageAlphaPremultipliedFirst = 2,
};
enum LUMO_SINCE(10.0) CGColorRenderingIntent : int32_t { kCGRenderingIntentDefault = 0 };

typedef uint32_t CGWindowID;
#define kCGNullWindowID (static_cast<CGWindowID>(0))
typedef uint32_t CGWindowListOption;
enum LUMO_SINCE(10.5) : CGWindowListOption {
    kCGWindowListOptionAll = 0,
    kCGWindowListOptionOnScreenOnly = 1 << 0,
    kCGWindowListExcludeDesktopElements = 1 << 4,
};

LUMO_SINCE(10.0)
static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return NSMakeRect(x, y, width, height);
}

extern "C" {
bool CGRectEqualToRect(CGRect one, CGRect other) LUMO_SINCE(10.0);

CGColorSpaceRef CGColorSpaceCreateDeviceGray(void) LUMO_SINCE(10.0)
    __attribute__((cf_returns_retained));
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void) LUMO_SINCE(10.0)
    __attribute__((cf_returns_retained));
CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data) LUMO_SINCE(10.4)
    __attribute__((cf_returns_retained));
CGImageRef CGImageCreate(size_t width, size_t height, size_t bitsPerComponent, size_t bitsPerPixel,
                         size_t bytesPerRow, CGColorSpaceRef space, CGBitmapInfo bitmapInfo,
                         CGDataProviderRef provider, const CGFloat *decode, bool shouldInterpolate,
                         CGColorRenderingIntent intent) LUMO_SINCE(10.0)
    __attribute__((cf_returns_retained));
CGMutablePathRef CGPathCreateMutable(void) LUMO_SINCE(10.2) __attribute__((cf_returns_retained));
void CGPathAddRect(CGMutablePathRef path, const CGAffineTransform *transform, CGRect rect)
    LUMO_SINCE(10.2);

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow)
    LUMO_SINCE(10.5) __attribute__((cf_returns_retained));
extern const CFStringRef kCGWindowNumber LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowOwnerPID LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowOwnerName LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowLayer LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowBounds LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowIsOnscreen LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowName LUMO_SINCE(10.5);
extern const CFStringRef kCGWindowAlpha LUMO_SINCE(10.5);
}
