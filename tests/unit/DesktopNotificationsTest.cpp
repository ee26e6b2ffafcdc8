#include "platform/freedesktop/DesktopNotifications.h"

#include "bus/BusService.h"
#include "desktop/MessageBus.h"
#include "desktop/TemporaryDirectory.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/FileDescriptor.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/GlibSignal.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <org.freedesktop.Notifications.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::freedesktop {
namespace {

using desktop::Variable;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

// What became of a notification: the error, empty for none; absent when nothing was received.
std::optional<std::string> send() {
    GlibMainLoop loop;
    DesktopNotifications notifications(loop);
    std::optional<std::string> outcome;
    notifications.add({"id", "A title", "A body."}, [&](const auto &error) {
        outcome = error.value_or("");
        loop.quit(0);
    });
    EXPECT_EQ(outcome, std::nullopt) << "not before add() has returned";
    const auto deadline = loop.after(10, [&] { loop.quit(1); });
    loop.run();
    return outcome;
}

TEST(DesktopNotificationsTest, FailureInWordsWithoutABus) {
    const desktop::TemporaryDirectory directory;
    const Variable runtime("XDG_RUNTIME_DIR", directory.path().string());
    {
        const Variable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
        EXPECT_EQ(send(), "no session bus");
    }
    for (const auto &broken :
         {"unix:path=" + (directory.path() / "none").string(), std::string("no address at all")}) {
        const Variable address("DBUS_SESSION_BUS_ADDRESS", broken);
        EXPECT_THAT(send(), Optional(Not(IsEmpty()))) << broken;
    }
}

// A bus that takes the call and never answers.
TEST(DesktopNotificationsTest, HangingBusIsNotWaitedFor) {
    const desktop::TemporaryDirectory directory;
    const auto path = directory.path() / "bus";
    const FileDescriptor server(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::strncpy(name.sun_path, path.c_str(), sizeof name.sun_path - 1);
    ASSERT_EQ(bind(server.get(), reinterpret_cast<const sockaddr *>(&name), sizeof name), 0);
    ASSERT_EQ(listen(server.get(), 4), 0);
    const Variable runtime("XDG_RUNTIME_DIR", directory.path().string());
    const Variable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    GlibMainLoop loop;
    auto notifications = std::make_unique<DesktopNotifications>(loop);
    bool hasResult = false;
    notifications->add({"id", "A title", "A body."}, [&](const auto &) { hasResult = true; });
    const auto timer = loop.after(0.2, [&] { loop.quit(3); });
    EXPECT_EQ(loop.run(), 3) << "the loop goes on";
    EXPECT_FALSE(hasResult);
    notifications.reset();
    GlibMainLoop afterwards;
    const auto end = afterwards.after(0.2, [&] { afterwards.quit(0); });
    afterwards.run();
    EXPECT_FALSE(hasResult) << "nothing is received after the end";
}

// What the service was given.
class NotificationService {
  public:
    explicit NotificationService(const std::string &address)
        : service_(address)
        , notifications_(dbus_notifications_skeleton_new())
        , calls_(connectToSignal(notifications_.get(), "handle-notify",
                                 G_CALLBACK(&NotificationService::notify), this)) {
        service_.offer(notifications_.get(), "/org/freedesktop/Notifications");
        service_.takeName("org.freedesktop.Notifications");
    }
    NotificationService(const NotificationService &) = delete;
    NotificationService &operator=(const NotificationService &) = delete;

    std::vector<std::string> received;

  private:
    static gboolean notify(DbusNotifications *notifications, GDBusMethodInvocation *invocation,
                           const char *program, guint /*replaced*/, const char *icon,
                           const char *title, const char *body, const char *const *actions,
                           GVariant *hints, int duration, gpointer self) {
        const char *entry = "";
        g_variant_lookup(hints, "desktop-entry", "&s", &entry);
        EXPECT_EQ(actions[0], nullptr);
        EXPECT_EQ(duration, -1);
        static_cast<NotificationService *>(self)->received = {program, icon, entry, title, body};
        dbus_notifications_complete_notify(notifications, invocation, 1);
        return TRUE;
    }

    test::BusService service_;
    GlibPointer<DbusNotifications> notifications_;
    Handle calls_;
};

TEST(DesktopNotificationsTest, ArrivalAtTheService) {
    const desktop::MessageBus messageBus;
    const Variable address("DBUS_SESSION_BUS_ADDRESS", messageBus.address());
    EXPECT_THAT(send(), Optional(HasSubstr("org.freedesktop.Notifications")))
        << "no program has that name on the bus yet";
    const NotificationService service(messageBus.address());
    EXPECT_EQ(send(), "");
    EXPECT_THAT(service.received,
                ElementsAre("Lumo", "app.lumo.Lumo", "app.lumo.Lumo", "A title", "A body."));
}

} // namespace
} // namespace lumo::freedesktop
