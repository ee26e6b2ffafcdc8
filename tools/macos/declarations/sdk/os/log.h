// What Lumo uses of the system's log.
#pragma once

#import <Foundation/Foundation.h>

@protocol OS_os_log <NSObject>
@end
typedef NSObject<OS_os_log> *os_log_t;

extern "C" {
os_log_t os_log_create(const char *subsystem, const char *category) LUMO_SINCE(10.12)
    __attribute__((ns_returns_retained));
void os_log_error(os_log_t log, const char *format, ...) LUMO_SINCE(10.12)
    __attribute__((format(os_log, 2, 3)));
}
