// What Lumo uses of the event manager.
#pragma once

#include <AssertMacros.h>
#include <Since.h>
#include <stddef.h>
#include <stdint.h>

typedef uint32_t OSType;
typedef int32_t OSStatus;
typedef uint32_t UInt32;
typedef uint32_t OptionBits;
typedef unsigned long ByteCount;
typedef OSType EventParamName;
typedef OSType EventParamType;
typedef struct OpaqueEventRef *EventRef;
typedef struct OpaqueEventTargetRef *EventTargetRef;
typedef struct OpaqueEventHandlerRef *EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef *EventHandlerCallRef;
typedef struct OpaqueEventHotKeyRef *EventHotKeyRef;
typedef OSStatus (*EventHandlerProcPtr)(EventHandlerCallRef call, EventRef event, void *userData);
typedef EventHandlerProcPtr EventHandlerUPP;

struct LUMO_SINCE(10.0) EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
};
struct LUMO_SINCE(10.0) EventHotKeyID {
    OSType signature;
    UInt32 id;
};

enum { noErr = 0 };
enum : OSType {
    kEventClassKeyboard = 0x6B657962,     // 'keyb'
    kEventParamDirectObject = 0x2D2D2D2D, // '----'
    typeEventHotKeyID = 0x686B6964,       // 'hkid'
};
enum : UInt32 { kEventHotKeyPressed = 5, kEventHotKeyReleased = 6 };
enum { cmdKey = 1 << 8, shiftKey = 1 << 9, optionKey = 1 << 11, controlKey = 1 << 12 };

extern "C" {
EventTargetRef GetEventDispatcherTarget(void) LUMO_SINCE(10.0);
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler,
                             unsigned long typeCount, const EventTypeSpec *types, void *userData,
                             EventHandlerRef *installed) LUMO_SINCE(10.0);
OSStatus RemoveEventHandler(EventHandlerRef handler) LUMO_SINCE(10.0);
OSStatus RegisterEventHotKey(UInt32 keyCode, UInt32 modifiers, EventHotKeyID id,
                             EventTargetRef target, OptionBits options, EventHotKeyRef *registered)
    LUMO_SINCE(10.0);
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) LUMO_SINCE(10.0);
OSStatus GetEventParameter(EventRef event, EventParamName name, EventParamType desiredType,
                           EventParamType *actualType, ByteCount bufferSize, ByteCount *actualSize,
                           void *data) LUMO_SINCE(10.0);
UInt32 GetEventKind(EventRef event) LUMO_SINCE(10.0);
}
