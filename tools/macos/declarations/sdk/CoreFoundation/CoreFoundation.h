// What Lumo uses of Core Foundation.
#pragma once

#import <Foundation/Foundation.h>
#include <Since.h>
#include <TargetConditionals.h>

#define LUMO_BRIDGED(type) __attribute__((objc_bridge(type)))

typedef const void *CFTypeRef;
typedef const struct LUMO_BRIDGED(NSString) __CFString *CFStringRef;
typedef const struct LUMO_BRIDGED(NSArray) __CFArray *CFArrayRef;
typedef const struct LUMO_BRIDGED(NSDictionary) __CFDictionary *CFDictionaryRef;
typedef const struct LUMO_BRIDGED(NSData) __CFData *CFDataRef;
typedef CFTypeRef CFPropertyListRef;
typedef struct __CFRunLoop *CFRunLoopRef;
typedef struct __CFRunLoopSource *CFRunLoopSourceRef;
typedef CFStringRef CFRunLoopMode;
typedef unsigned long CFTypeID;
typedef signed long CFIndex;

#define CFSTR(text)                                                                                \
    (reinterpret_cast<CFStringRef>(__builtin___CFStringMakeConstantString("" text "")))

extern "C" {
void CFRelease(CFTypeRef object) LUMO_SINCE(10.0);
CFTypeRef CFRetain(CFTypeRef object) LUMO_SINCE(10.0) __attribute__((cf_returns_retained));
CFTypeID CFGetTypeID(CFTypeRef object) LUMO_SINCE(10.0);
CFTypeID CFBooleanGetTypeID(void) LUMO_SINCE(10.0);
CFTypeID CFArrayGetTypeID(void) LUMO_SINCE(10.0);
CFIndex CFArrayGetCount(CFArrayRef array) LUMO_SINCE(10.0);
const void *CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) LUMO_SINCE(10.0);

extern const CFStringRef kCFPreferencesCurrentUser LUMO_SINCE(10.0);
extern const CFStringRef kCFPreferencesCurrentHost LUMO_SINCE(10.0);
CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef applicationID,
                                         CFStringRef userName, CFStringRef hostName)
    LUMO_SINCE(10.0) __attribute__((cf_returns_retained));

extern const CFRunLoopMode kCFRunLoopCommonModes LUMO_SINCE(10.0);
CFRunLoopRef CFRunLoopGetMain(void) LUMO_SINCE(10.0);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode)
    LUMO_SINCE(10.0);
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode)
    LUMO_SINCE(10.0);
}

LUMO_SINCE(10.7)
static inline id CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) object) {
    return (__bridge_transfer id)object;
}
