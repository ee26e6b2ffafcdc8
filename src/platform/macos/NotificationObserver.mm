#import "platform/macos/NotificationObserver.h"

#include <memory>
#include <utility>

namespace lumo::macos {

Handle observeNotification(NSNotificationCenter *centre, NSNotificationName name, id object,
                           std::function<void()> observer) {
    // A notification may already be on its way through the queue when the handle is released.
    auto live = std::make_shared<std::function<void()>>(std::move(observer));
    const std::weak_ptr<std::function<void()>> target = live;
    id token = [centre addObserverForName:name
                                   object:object
                                    queue:[NSOperationQueue mainQueue]
                               usingBlock:^(NSNotification *) {
                                   if (const auto call = target.lock()) {
                                       (*call)();
                                   }
                               }];
    return Handle([centre, token, live]() mutable {
        [centre removeObserver:token];
        live.reset();
    });
}

} // namespace lumo::macos
