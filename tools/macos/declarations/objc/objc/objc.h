// The language's own types as the Mac has them.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

typedef struct objc_class *Class;
struct objc_object {
    Class isa;
};
typedef struct objc_object *id;
typedef struct objc_selector *SEL;
typedef struct objc_method *Method;
typedef struct objc_ivar *Ivar;
typedef struct objc_property *objc_property_t;
struct objc_method_description {
    SEL name;
    char *types;
};

#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#ifdef __cplusplus
#define nil nullptr
#define Nil nullptr
#else
#define nil ((void *)0)
#define Nil ((void *)0)
#endif

// The Mac has functions without a prototype here, to be cast before they are called.
typedef void (*IMP)(void);

@class Protocol;
