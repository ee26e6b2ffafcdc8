#include "platform/freedesktop/StatusNotifierItem.h"

#include "bus/RunUntil.h"
#include "bus/StatusNotifierHost.h"
#include "desktop/MessageBus.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumo::freedesktop {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

class StatusNotifierItemTest : public testing::Test {
  protected:
    StatusNotifierItemTest() {
        item_->setTitle({"\u25CF", {1, 0, 0, 1}, 15, true, -0.5});
        item_->setToolTip("A tool tip");
    }

    bool eventually(const std::function<bool()> &condition) { return runUntil(loop_, condition); }

    // The item's properties, as the host reads them.
    std::string propertiesSeenBy(test::StatusNotifierHost &host) {
        host.askForProperties();
        EXPECT_TRUE(eventually([&] { return !host.properties().empty(); }));
        return host.properties();
    }

    desktop::MessageBus messageBus_;
    desktop::Variable address_{"DBUS_SESSION_BUS_ADDRESS", messageBus_.address()};
    GlibMainLoop loop_;
    std::unique_ptr<SessionBus> bus_ = std::make_unique<SessionBus>(loop_);
    std::unique_ptr<StatusNotifierItem> item_ = std::make_unique<StatusNotifierItem>(*bus_);
};

TEST_F(StatusNotifierItemTest, RegistersWithEveryWatcher) {
    int changes = 0;
    const auto hosts = item_->onHostChange([&] { ++changes; });
    for (int round = 0; round < 2; ++round) {
        auto host = std::make_unique<test::StatusNotifierHost>(messageBus_.address());
        ASSERT_TRUE(eventually([&] { return item_->watcherProcess() == getpid(); }));
        ASSERT_TRUE(eventually([&] { return !host->items().empty(); }));
        EXPECT_EQ(host->items().size(), 1U);
        EXPECT_FALSE(item_->hasHost()) << "a watcher alone shows nothing";
        host->setHost(true);
        EXPECT_TRUE(eventually([&] { return item_->hasHost(); }));
        host->setHost(false);
        EXPECT_TRUE(eventually([&] { return !item_->hasHost(); }));
        host->setHost(true);
        EXPECT_TRUE(eventually([&] { return item_->hasHost(); }));
        changes = 0;
        host.reset();
        EXPECT_TRUE(eventually([&] { return item_->watcherProcess() == 0; }));
        EXPECT_FALSE(item_->hasHost());
        EXPECT_GE(changes, 1);
    }
}

TEST_F(StatusNotifierItemTest, ComesBackWithTheBus) {
    auto host = std::make_unique<test::StatusNotifierHost>(messageBus_.address());
    host->setHost(true);
    ASSERT_TRUE(eventually([&] { return item_->hasHost(); }));
    // As modules of GIO make it: its loss ends the process, unless that is prevented.
    const GlibPointer<GDBusConnection> shared(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    ASSERT_NE(shared, nullptr);
    messageBus_.stop();
    ASSERT_TRUE(eventually(
        [&] { return !item_->hasHost() && g_dbus_connection_is_closed(shared.get()) != FALSE; }));
    host.reset();
    messageBus_.start();
    host = std::make_unique<test::StatusNotifierHost>(messageBus_.address());
    host->setHost(true);
    EXPECT_TRUE(eventually([&] { return item_->hasHost(); }));
    EXPECT_EQ(host->items().size(), 1U);
}

TEST_F(StatusNotifierItemTest, PropertiesAndAnnouncedChanges) {
    test::StatusNotifierHost host(messageBus_.address());
    ASSERT_TRUE(eventually([&] { return !host.items().empty(); }));
    EXPECT_THAT(propertiesSeenBy(host),
                AllOf(Not(HasSubstr("'Menu'")), // which some panels would show instead
                      HasSubstr("'Id': <'app.lumo.Lumo'>"), HasSubstr("'Status': <'Active'>"),
                      HasSubstr("'ItemIsMenu': <false>"), HasSubstr("'A tool tip'"),
                      HasSubstr("'IconPixmap': <[(16, 16, [byte"),
                      HasSubstr("0xff, 0xff, 0x00, 0x00"))) // an opaque red pixel
        << "from the start";
    host.takeSignals();
    item_->setTitle({"\u25CF", {0, 0, 1, 1}, 15, true, -0.5});
    item_->setTitle({"\u25CF", {0, 0, 1, 1}, 15, true, -0.5});
    item_->setToolTip("Another one");
    item_->setHidden(true);
    item_->setHidden(true);
    EXPECT_THAT(propertiesSeenBy(host),
                AllOf(HasSubstr("0xff, 0x00, 0x00, 0xff"), HasSubstr("'Another one'"),
                      HasSubstr("'Status': <'Passive'>"), Not(HasSubstr("'A tool tip'"))));
    EXPECT_THAT(host.takeSignals(), ElementsAre("NewIcon", "NewToolTip", "NewStatus"));
}

TEST_F(StatusNotifierItemTest, ContextMenuAloneOpensIt) {
    test::StatusNotifierHost host(messageBus_.address());
    ASSERT_TRUE(eventually([&] { return !host.items().empty(); }));
    std::vector<std::pair<int, int>> places;
    const auto menus = item_->onContextMenu([&](int x, int y) { places.emplace_back(x, y); });
    host.callItem("Activate", 1, 1);
    host.callItem("SecondaryActivate", 2, 2);
    host.callItem("ContextMenu", 30, 40);
    ASSERT_TRUE(eventually([&] { return !places.empty(); }));
    EXPECT_THAT(places, ElementsAre(Pair(30, 40)));

    host.callItem("ContextMenu", 50, 60);
    item_.reset();
    bus_.reset();
    test::StatusNotifierHost other(messageBus_.address());
    other.setHost(true);
    host.takeSignals();
    EXPECT_EQ(places.size(), 1U);
}

} // namespace
} // namespace lumo::freedesktop
