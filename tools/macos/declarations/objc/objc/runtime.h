#pragma once

#include <objc/objc.h>

#ifdef __cplusplus
extern "C" {
#endif
Class objc_getClass(const char *name);
Class objc_lookUpClass(const char *name);
const char *class_getName(Class type);
Class class_getSuperclass(Class type);
Method class_getInstanceMethod(Class type, SEL selector);
Method class_getClassMethod(Class type, SEL selector);
BOOL class_respondsToSelector(Class type, SEL selector);
BOOL class_conformsToProtocol(Class type, Protocol *protocol);
IMP method_getImplementation(Method method);
const char *method_getTypeEncoding(Method method);
SEL sel_registerName(const char *name);
const char *sel_getName(SEL selector);
const char *protocol_getName(Protocol *protocol);
struct objc_method_description protocol_getMethodDescription(Protocol *protocol, SEL selector,
                                                             BOOL isRequired, BOOL isInstance);
#ifdef __cplusplus
}
#endif
