// What Lumo uses of the system's queues.
#pragma once

#import <Foundation/NSObject.h>
#include <Since.h>
#include <stdint.h>

@protocol OS_dispatch_object <NSObject>
@end
@protocol OS_dispatch_queue <OS_dispatch_object>
@end
@protocol OS_dispatch_source <OS_dispatch_object>
@end
typedef NSObject<OS_dispatch_object> *dispatch_object_t;
typedef NSObject<OS_dispatch_queue> *dispatch_queue_t;
typedef NSObject<OS_dispatch_source> *dispatch_source_t;
typedef const struct dispatch_source_type_s *dispatch_source_type_t;
typedef void (^dispatch_block_t)(void);

enum LUMO_SINCE(10.10) qos_class_t : unsigned {
    QOS_CLASS_USER_INITIATED = 0x19,
    QOS_CLASS_UTILITY = 0x11,
};

extern "C" {
extern const struct dispatch_source_type_s _dispatch_source_type_signal LUMO_SINCE(10.6);
#define DISPATCH_SOURCE_TYPE_SIGNAL (&_dispatch_source_type_signal)

dispatch_queue_t dispatch_get_main_queue(void) LUMO_SINCE(10.6);
dispatch_queue_t dispatch_get_global_queue(intptr_t quality, uintptr_t flags) LUMO_SINCE(10.6);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) LUMO_SINCE(10.6);
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle,
                                         uintptr_t mask, dispatch_queue_t queue) LUMO_SINCE(10.6)
    __attribute__((ns_returns_retained));
void dispatch_source_set_event_handler(dispatch_source_t source, dispatch_block_t handler)
    LUMO_SINCE(10.6);
void dispatch_source_cancel(dispatch_source_t source) LUMO_SINCE(10.6);
void dispatch_resume(dispatch_object_t object) LUMO_SINCE(10.6);
}
