#pragma once

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "support/Lifetime.h"

@class LumoNotificationPresenter;

namespace lumo::macos {

// The notification centre. The user is asked for permission when there is something to say for the
// first time.
class MacUserNotifications final : public UserNotifications {
  public:
    // The main loop outlives the object.
    explicit MacUserNotifications(MainLoop &mainLoop);

    void add(const UserNotification &notification,
             std::function<void(const std::optional<std::string> &error)> completion) override;

  private:
    MainLoop &mainLoop_;
    LumoNotificationPresenter *presenter_; // which the centre does not keep
    Lifetime lifetime_;
};

} // namespace lumo::macos
