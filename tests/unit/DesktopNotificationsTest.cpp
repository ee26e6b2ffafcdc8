#include "desktop/PrivateDesktop.h"
#include "desktop/TemporaryDirectory.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/DesktopNotifications.h"
#include "platform/freedesktop/GlibMainLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace lumo::x11 {
namespace {

using desktop::PrivateDesktop;
using desktop::Variable;
using desktop::WindowManager;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

// What became of a notification: the error, empty for none; absent when nothing was heard.
std::optional<std::string> send() {
    freedesktop::GlibMainLoop loop;
    freedesktop::DesktopNotifications notifications(loop);
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

TEST(UserNotificationsTest, FailAtOnceAndInWordsWithoutABus) {
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
TEST(UserNotificationsTest, NeverWaitForABusThatHangs) {
    const desktop::TemporaryDirectory directory;
    const auto path = directory.path() / "bus";
    const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::strncpy(name.sun_path, path.c_str(), sizeof name.sun_path - 1);
    ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr *>(&name), sizeof name), 0);
    ASSERT_EQ(listen(server, 4), 0);
    const Variable runtime("XDG_RUNTIME_DIR", directory.path().string());
    const Variable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    freedesktop::GlibMainLoop loop;
    auto notifications = std::make_unique<freedesktop::DesktopNotifications>(loop);
    bool wasHeard = false;
    notifications->add({"id", "A title", "A body."}, [&](const auto &) { wasHeard = true; });
    int turns = 0;
    const auto timer = loop.every(0.01, [&] {
        if (++turns == 20) {
            loop.quit(3);
        }
    });
    EXPECT_EQ(loop.run(), 3) << "the loop goes on";
    EXPECT_FALSE(wasHeard);
    notifications.reset();
    close(server);
    freedesktop::GlibMainLoop afterwards;
    const auto end = afterwards.after(0.2, [&] { afterwards.quit(0); });
    afterwards.run();
    EXPECT_FALSE(wasHeard) << "nothing is heard after the end";
}

TEST(UserNotificationsTest, ArriveAtTheDesktopsService) {
    PrivateDesktop desktop({.windowManager = WindowManager::none});
    desktop.startSessionBus();
    const Variable address("DBUS_SESSION_BUS_ADDRESS",
                           desktop.environment().at("DBUS_SESSION_BUS_ADDRESS"));
    EXPECT_THAT(send(), Optional(HasSubstr("org.freedesktop.Notifications")))
        << "nobody has that name on the bus yet";
    const auto service = desktop.startNotificationService();
    EXPECT_TRUE(desktop.session().eventually([&] { return send() == ""; })) << service->report();
    EXPECT_TRUE(desktop.session().eventually([&] {
        const auto lines = service->outputLines();
        const auto has = [&](const char *text) {
            return std::ranges::any_of(lines, [&](const std::string &line) {
                return line.find(text) != std::string::npos;
            });
        };
        return has("A title") && has("A body.");
    })) << service->report();
}

} // namespace
} // namespace lumo::x11
