#pragma once

#include "support/Handle.h"

#import <Foundation/Foundation.h>

#include <functional>

namespace lumo::macos {

// Calls the observer on the main queue each time the centre posts the notification about the
// object, or about any when it is nil, until the handle is released.
Handle observeNotification(NSNotificationCenter *centre, NSNotificationName name, id object,
                           std::function<void()> observer);

} // namespace lumo::macos
