#pragma once

#import <AppKit/AppKit.h>

#include <functional>

// Hands on that what it observes has changed.
@interface LumoAppearanceObserver : NSObject {
  @public
    std::function<void()> onChange;
}
@end
