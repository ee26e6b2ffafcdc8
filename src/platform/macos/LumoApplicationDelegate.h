#pragma once

#import <AppKit/AppKit.h>

#include <functional>

// Hands on what the application object tells its delegate.
@interface LumoApplicationDelegate : NSObject <NSApplicationDelegate> {
  @public
    std::function<void()> onDidFinishLaunching;
    std::function<void()> onWillTerminate;
    std::function<void()> onReopen;
}
@end
