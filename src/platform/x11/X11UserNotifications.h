#pragma once

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "support/Lifetime.h"

#include <memory>

namespace lumo::x11 {

class Cancellation;

// Notifications through the desktop's notification service on the session bus. Each is sent over a
// connection of its own, so that nothing is kept up for something this rare and a bus that comes
// later is found. Nothing is started to get a bus.
class X11UserNotifications final : public UserNotifications {
  public:
    explicit X11UserNotifications(MainLoop &mainLoop);
    ~X11UserNotifications() override;
    X11UserNotifications(const X11UserNotifications &) = delete;
    X11UserNotifications &operator=(const X11UserNotifications &) = delete;

    void add(const UserNotification &notification,
             std::function<void(const std::optional<std::string> &error)> completion) override;

  private:
    class Delivery;

    MainLoop &mainLoop_;
    std::unique_ptr<Cancellation> cancellation_; // of whatever is under way at the end
    Lifetime lifetime_;
};

} // namespace lumo::x11
