// Foundation: what GNUstep declares, completed by what it lacks of what Lumo uses.
#pragma once

#include_next <Foundation/Foundation.h>
#include <Since.h>

@interface NSURL (LumoCompletion)
@property(readonly) BOOL hasDirectoryPath LUMO_SINCE(10.11);
@end

@interface NSFileManager (LumoCompletion)
- (nonnull NSArray<NSURL *> *)URLsForDirectory:(NSSearchPathDirectory)directory
                                     inDomains:(NSSearchPathDomainMask)domains LUMO_SINCE(10.6);
@end

@interface NSTimer (LumoCompletion)
@property NSTimeInterval tolerance LUMO_SINCE(10.9);
@end
