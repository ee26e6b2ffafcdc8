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
void CFRelease(CFTypeRef object);
CFTypeRef CFRetain(CFTypeRef object) __attribute__((cf_returns_retained));
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFBooleanGetTypeID(void);
CFTypeID CFArrayGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef array);
const void *CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesCurrentHost;
CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef applicationID,
                                         CFStringRef userName, CFStringRef hostName)
    __attribute__((cf_returns_retained));

extern const CFRunLoopMode kCFRunLoopCommonModes;
CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
}

static inline id CFBridgingRelease(CFTypeRef __attribute__((cf_consumed)) object) {
    return (__bridge_transfer id)object;
}
