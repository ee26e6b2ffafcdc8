#pragma once

#include <functional>
#include <optional>
#include <string>

namespace lumo {

struct UserNotification {
    std::string identifier; // tells it from all others
    std::string title;
    std::string body;
};

// Messages to the user that outlive what sent them.
class UserNotifications {
  public:
    virtual ~UserNotifications() = default;

    // Delivers the notification at once, with the default sound. Never waits: the completion is
    // called on the main thread in a later turn, with what went wrong in words, or with nothing
    // when the notification was accepted; not at all once this object is gone. Main thread only.
    virtual void add(const UserNotification &notification,
                     std::function<void(const std::optional<std::string> &error)> completion) = 0;
};

} // namespace lumo
