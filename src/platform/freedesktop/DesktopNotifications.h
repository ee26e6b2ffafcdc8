#pragma once

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Lifetime.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*): as it is generated
using DbusNotifications = struct _DbusNotifications;

namespace lumo::freedesktop {

// Notifications through the desktop's notification service on the session bus. Each is sent over a
// connection of its own, so that nothing is kept up for something this rare and a bus that comes
// later is found. Nothing is started to get a bus.
class DesktopNotifications final : public UserNotifications {
  public:
    // The main loop outlives the object.
    explicit DesktopNotifications(MainLoop &mainLoop);

    void add(const UserNotification &notification,
             std::function<void(const std::optional<std::string> &error)> completion) override;

  private:
    using Completion = std::function<void(const std::optional<std::string> &error)>;

    void findService(const std::shared_ptr<GDBusConnection> &connection,
                     const UserNotification &notification, const Completion &completion);
    void send(const std::shared_ptr<GDBusConnection> &connection, DbusNotifications *service,
              const UserNotification &notification, const Completion &completion);

    MainLoop &mainLoop_;
    Lifetime lifetime_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
