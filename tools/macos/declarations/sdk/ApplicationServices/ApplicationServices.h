// What Lumo uses of the accessibility interface.
#pragma once

#include <AssertMacros.h>
#import <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

typedef unsigned char Boolean;
typedef const struct LUMO_BRIDGED(id) __AXUIElement *AXUIElementRef;
typedef struct LUMO_BRIDGED(id) __AXObserver *AXObserverRef;

enum LUMO_SINCE(10.2) AXError : int32_t {
    kAXErrorSuccess = 0,
    kAXErrorFailure = -25200,
    kAXErrorCannotComplete = -25204,
};

typedef void (*AXObserverCallback)(AXObserverRef observer, AXUIElementRef element,
                                   CFStringRef notification, void *refcon);

extern "C" {
Boolean AXIsProcessTrusted(void) LUMO_SINCE(10.4);
CFTypeID AXUIElementGetTypeID(void) LUMO_SINCE(10.2);
AXUIElementRef AXUIElementCreateApplication(pid_t process) LUMO_SINCE(10.2)
    __attribute__((cf_returns_retained));
AXUIElementRef AXUIElementCreateSystemWide(void) LUMO_SINCE(10.2)
    __attribute__((cf_returns_retained));
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds) LUMO_SINCE(10.4);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef *value __attribute__((cf_returns_retained)))
    LUMO_SINCE(10.2);
AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action) LUMO_SINCE(10.2);
AXError AXObserverCreate(pid_t process, AXObserverCallback callback,
                         AXObserverRef *observer __attribute__((cf_returns_retained)))
    LUMO_SINCE(10.2);
AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void *refcon) LUMO_SINCE(10.2);
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer) LUMO_SINCE(10.2);
}
