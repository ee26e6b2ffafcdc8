#pragma once

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "support/Lifetime.h"

#include <memory>

namespace lumo::freedesktop {

class Cancellation;

// Notifications through the desktop's notification service on the session bus. Each is sent over a
// connection of its own, so that nothing is kept up for something this rare and a bus that comes
// later is found. Nothing is started to get a bus.
class DesktopNotifications final : public UserNotifications {
  public:
    explicit DesktopNotifications(MainLoop &mainLoop);
    ~DesktopNotifications() override;
    DesktopNotifications(const DesktopNotifications &) = delete;
    DesktopNotifications &operator=(const DesktopNotifications &) = delete;

    void add(const UserNotification &notification,
             std::function<void(const std::optional<std::string> &error)> completion) override;

  private:
    class Delivery;

    MainLoop &mainLoop_;
    std::unique_ptr<Cancellation> cancellation_; // of whatever is under way at the end
    Lifetime lifetime_;
};

} // namespace lumo::freedesktop
