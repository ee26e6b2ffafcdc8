#include "desktop/PrivateDesktop.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/PackageKitUpdates.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/x11/X11StatusItem.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/SingleInstance.h"
#include "platform/x11/server/X11Screens.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::PrivateDesktop;
using desktop::Variable;

// Turns the loop until the condition holds; false when it does not within ten seconds.
bool runUntil(freedesktop::GlibMainLoop &loop, const std::function<bool()> &condition) {
    bool isTimeUp = false;
    const auto looks = loop.every(0.01, [] {});
    const auto deadline = loop.after(10, [&] { isTimeUp = true; });
    while (!condition() && !isTimeUp) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return !isTimeUp;
}

TEST(SingleInstanceTest, TheSecondAsksTheFirstToOpenAndGivesWay) {
    const PrivateDesktop desktop({.windowManager = desktop::WindowManager::none});
    const auto first = Connection::open(desktop.displayName().c_str());
    const auto second = Connection::open(desktop.displayName().c_str());
    auto instance = SingleInstance::claim(*first);
    ASSERT_TRUE(instance);
    int requests = 0;
    const auto reopening = instance->onReopenRequest([&] { ++requests; });
    for (int round = 1; round <= 2; ++round) {
        EXPECT_FALSE(SingleInstance::claim(*second));
        EXPECT_TRUE(first->dispatchUntil([&] { return requests == round; }, 10));
    }
    instance.reset();
    first->flush();
    EXPECT_TRUE(
        second->dispatchUntil([&] { return SingleInstance::claim(*second) != nullptr; }, 10));
}

// A status item on a private desktop, and what is heard of it.
class StatusItemTest : public testing::Test {
  protected:
    void makeItem() {
        bus = std::make_unique<freedesktop::SessionBus>(loop);
        item = std::make_unique<X11StatusItem>(*connection, formats, *bus,
                                               [this] { return screens.pointSpace(); });
        clicks =
            item->onRightMouseUp([this](const StatusItemPlace &place) { places.push_back(place); });
        item->setToolTip("Lumo - Focus and privacy");
        setDot({1, 0, 0, 1});
    }

    void setDot(const Color &color) { item->setTitle({"\u25CF", color, 15, true, -0.5}); }

    bool eventually(const std::function<bool()> &condition) { return runUntil(loop, condition); }

    // Where pixels of nearly that colour are, as their middle; absent when there are none.
    std::optional<desktop::Spot> findDot(int red, int green, int blue) {
        const auto picture = desktop.session().picture();
        long x = 0;
        long y = 0;
        long count = 0;
        for (int row = 0; row < picture.height(); ++row) {
            for (int column = 0; column < picture.width(); ++column) {
                const auto pixel = picture.at(column, row);
                if (std::abs(pixel.red - red) + std::abs(pixel.green - green) +
                        std::abs(pixel.blue - blue) <
                    30) {
                    x += column;
                    y += row;
                    ++count;
                }
            }
        }
        return count < 20 ? std::nullopt
                          : std::optional(desktop::Spot{static_cast<int>(x / count),
                                                        static_cast<int>(y / count)});
    }

    bool dotAppears(int red, int green, int blue) {
        return eventually([&] { return (dot = findDot(red, green, blue)).has_value(); });
    }

    PrivateDesktop desktop;
    freedesktop::GlibMainLoop loop;
    std::unique_ptr<Connection> connection = Connection::open(desktop.displayName().c_str());
    Handle watch = x11::watch(loop, *connection, [] { FAIL() << "the server is gone"; });
    X11Screens screens{*connection, loop};
    const RenderFormats formats{*connection};
    std::unique_ptr<freedesktop::SessionBus> bus; // made with the item, when the environment is set
    std::unique_ptr<X11StatusItem> item;
    Handle clicks;
    std::vector<StatusItemPlace> places;
    std::optional<desktop::Spot> dot;
};

TEST_F(StatusItemTest, AppearsInATrayThatComesLaterAndHearsTheRightButtonsReleaseOnly) {
    const Variable noBus("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    const Variable noDirectory("XDG_RUNTIME_DIR", desktop.directory().string());
    makeItem();
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{"trayer", "--edge", "top", "--align", "right", "--SetDockType",
                                   "true", "--transparent", "false", "--tint", "0x000000",
                                   "--alpha", "0", "--transparent", "true"},
          std::vector<std::string>{"trayer", "--edge", "bottom"},
          {"tint2"}}) {
        const auto tray = desktop.start(command);
        setDot({1, 0, 0, 1});
        ASSERT_TRUE(dotAppears(255, 0, 0)) << command[0] << ' ' << tray->report();
        setDot({0, 1, 0, 1});
        ASSERT_TRUE(dotAppears(0, 255, 0)) << command[0];

        places.clear();
        auto &session = desktop.session();
        session.click(*dot, 1);
        session.click(*dot, 2);
        session.movePointerTo(dot->x, dot->y);
        session.setButton(3, true);
        ASSERT_TRUE(session.remains(
            [&] {
                connection->dispatch();
                return places.empty();
            },
            desktop::Seconds(0.1)))
            << "only the release counts";
        session.setButton(3, false);
        ASSERT_TRUE(eventually([&] { return !places.empty(); })) << command[0];
        ASSERT_EQ(places.size(), 1U);
        ASSERT_TRUE(places[0].item);
        const double bottom = session.screenArea().height;
        const Rect place = *places[0].item;
        EXPECT_TRUE(place.x <= dot->x && dot->x < place.maxX()) << describe(place);
        EXPECT_TRUE(bottom - place.maxY() <= dot->y && dot->y < bottom - place.y);
        EXPECT_EQ(places[0].pointer, (Point{double(dot->x), bottom - dot->y}));

        tray->kill();
        ASSERT_TRUE(eventually([&] { return !findDot(0, 255, 0); }))
            << "it must not float about without a tray";
    }
}

freedesktop::GlibPointer<GDBusConnection> connectTo(const std::string &address) {
    return freedesktop::GlibPointer<GDBusConnection>(g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
}

// What panels put on the session bus, as far as an item needs it.
class FakeHost {
  public:
    explicit FakeHost(const std::string &address)
        : bus_(connectTo(address)) {
        static const freedesktop::GlibPointer<GDBusNodeInfo> node(g_dbus_node_info_new_for_xml(
            "<node><interface name='org.kde.StatusNotifierWatcher'>"
            "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
            "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
            "<signal name='StatusNotifierHostRegistered'/></interface></node>",
            nullptr));
        static constexpr GDBusInterfaceVTable table{
            [](GDBusConnection *, const char *, const char *, const char *, const char *,
               GVariant *arguments, GDBusMethodInvocation *invocation, gpointer self) {
                const char *item = nullptr;
                g_variant_get(arguments, "(&s)", &item);
                static_cast<FakeHost *>(self)->items.emplace_back(item);
                g_dbus_method_invocation_return_value(invocation, nullptr);
            },
            [](GDBusConnection *, const char *, const char *, const char *, const char *, GError **,
               gpointer self) {
                return g_variant_new_boolean(static_cast<FakeHost *>(self)->isHost ? TRUE : FALSE);
            },
            nullptr,
            {}};
        object_ =
            g_dbus_connection_register_object(bus_.get(), "/StatusNotifierWatcher",
                                              node->interfaces[0], &table, this, nullptr, nullptr);
        // Who sees the name expects the objects:
        // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
        name_ = g_bus_own_name_on_connection(bus_.get(), "org.kde.StatusNotifierWatcher",
                                             G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                             nullptr);
    }
    ~FakeHost() {
        g_bus_unown_name(name_);
        g_dbus_connection_unregister_object(bus_.get(), object_);
        g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    }
    FakeHost(const FakeHost &) = delete;
    FakeHost &operator=(const FakeHost &) = delete;

    void becomeHost() {
        isHost = true;
        g_dbus_connection_emit_signal(bus_.get(), nullptr, "/StatusNotifierWatcher",
                                      "org.kde.StatusNotifierWatcher",
                                      "StatusNotifierHostRegistered", nullptr, nullptr);
    }

    void callItem(const char *method, int x, int y) {
        g_dbus_connection_call(bus_.get(), items.back().c_str(), "/StatusNotifierItem",
                               "org.kde.StatusNotifierItem", method, g_variant_new("(ii)", x, y),
                               nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    }

    // The item's properties; asked for without waiting, since the item lives on this very thread.
    void askForProperties() {
        const auto answered = +[](GObject *source, GAsyncResult *result, gpointer self) {
            static_cast<FakeHost *>(self)->properties.reset(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
        };
        g_dbus_connection_call(bus_.get(), items.back().c_str(), "/StatusNotifierItem",
                               "org.freedesktop.DBus.Properties", "GetAll",
                               g_variant_new("(s)", "org.kde.StatusNotifierItem"), nullptr,
                               G_DBUS_CALL_FLAGS_NONE, -1, nullptr, answered, this);
    }

    std::string propertiesText() const {
        char *printed = g_variant_print(properties.get(), FALSE);
        std::string text = printed;
        g_free(printed);
        return text;
    }

    bool isHost = false;
    std::vector<std::string> items;
    freedesktop::GlibPointer<GVariant> properties;

  private:
    freedesktop::GlibPointer<GDBusConnection> bus_;
    unsigned object_ = 0;
    unsigned name_ = 0;
};

TEST_F(StatusItemTest, MovesFromTheTrayToAPanelOnTheSessionBusAndBack) {
    desktop.startSessionBus();
    const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
    const Variable busAddress("DBUS_SESSION_BUS_ADDRESS", address);
    makeItem();
    const auto tray = desktop.start({"trayer", "--edge", "top"});
    ASSERT_TRUE(dotAppears(255, 0, 0));
    for (int round = 0; round < 2; ++round) {
        auto host = std::make_unique<FakeHost>(address);
        ASSERT_TRUE(eventually([&] { return !host->items.empty(); })) << "offers itself";
        EXPECT_TRUE(findDot(255, 0, 0)) << "a watcher without a host shows nothing";
        host->becomeHost();
        ASSERT_TRUE(eventually([&] { return !findDot(255, 0, 0); })) << "never in both places";

        places.clear();
        host->callItem("Activate", 1, 1);
        host->callItem("ContextMenu", 30, 40);
        ASSERT_TRUE(eventually([&] { return !places.empty(); }));
        ASSERT_EQ(places.size(), 1U);
        EXPECT_FALSE(places[0].item);
        EXPECT_EQ(places[0].pointer, (Point{30, desktop.session().screenArea().height - 40.0}));

        host->askForProperties();
        ASSERT_TRUE(eventually([&] { return host->properties != nullptr; }));
        const auto text = host->propertiesText();
        EXPECT_THAT(text, testing::Not(testing::HasSubstr("'Menu'"))) << "some would show that";
        EXPECT_THAT(text, testing::HasSubstr("'Lumo - Focus and privacy'"));
        EXPECT_THAT(text, testing::HasSubstr("'IconPixmap': <[(16, 16, [byte"));
        EXPECT_THAT(text, testing::HasSubstr("0xff, 0xff, 0x00, 0x00")) << "an opaque red pixel";

        host.reset();
        ASSERT_TRUE(dotAppears(255, 0, 0)) << "the tray has it again";
    }
}

// Some panels offer both and keep the right button to themselves on the bus.
TEST_F(StatusItemTest, TakesTheTrayOfAPanelThatOffersBoth) {
    desktop.startSessionBus();
    const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
    const Variable busAddress("DBUS_SESSION_BUS_ADDRESS", address);
    FakeHost panel(address);
    panel.becomeHost();
    makeItem();
    auto &session = desktop.session();
    const auto isInTray = [&] {
        return std::ranges::any_of(session.stacking(), [&](auto window) {
            return session.titleOf(window) == "Lumo - Focus and privacy";
        });
    };
    const auto statusBecomes = [&](const std::string &status) {
        return eventually([&] { return !panel.items.empty(); }) && eventually([&] {
                   panel.properties.reset();
                   panel.askForProperties();
                   return eventually([&] { return panel.properties != nullptr; }) &&
                          panel.propertiesText().find("'Status': <'" + status) != std::string::npos;
               });
    };
    EXPECT_TRUE(statusBecomes("Active"));
    EXPECT_FALSE(isInTray());

    auto *server = session.connection();
    const auto tray = xcb_generate_id(server);
    xcb_create_window(server, XCB_COPY_FROM_PARENT, tray, session.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const auto selection = session.atom("_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(server, tray, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t announcement{};
    announcement.response_type = XCB_CLIENT_MESSAGE;
    announcement.format = 32;
    announcement.window = session.root();
    announcement.type = session.atom("MANAGER");
    announcement.data.data32[1] = selection;
    announcement.data.data32[2] = tray;
    xcb_send_event(server, 0, session.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&announcement));
    xcb_flush(server);
    EXPECT_TRUE(eventually(isInTray));
    EXPECT_TRUE(statusBecomes("Passive"));

    xcb_destroy_window(server, tray);
    xcb_flush(server);
    EXPECT_TRUE(statusBecomes("Active"));
    EXPECT_FALSE(isInTray());
}

// A package service whose answers are scripted: signals of a transaction by the method that is
// called on it.
class FakePackageService {
  public:
    explicit FakePackageService(const std::string &address)
        : bus_(connectTo(address)) {
        static const freedesktop::GlibPointer<GDBusNodeInfo> node(g_dbus_node_info_new_for_xml(
            "<node><interface name='org.freedesktop.PackageKit'><method name='CreateTransaction'>"
            "<arg type='o' direction='out'/></method></interface>"
            "<interface name='org.freedesktop.PackageKit.Transaction'>"
            "<method name='SearchFiles'><arg type='t' direction='in'/>"
            "<arg type='as' direction='in'/></method>"
            "<method name='GetUpdates'><arg type='t' direction='in'/></method></interface></node>",
            nullptr));
        static constexpr GDBusInterfaceVTable table{
            [](GDBusConnection *, const char *, const char *path, const char *, const char *method,
               GVariant *arguments, GDBusMethodInvocation *invocation, gpointer self) {
                static_cast<FakePackageService *>(self)->answer(path, method, arguments,
                                                                invocation);
            },
            nullptr,
            nullptr,
            {}};
        g_dbus_connection_register_object(bus_.get(), "/org/freedesktop/PackageKit",
                                          node->interfaces[0], &table, this, nullptr, nullptr);
        for (const char *path : {"/1", "/2"}) {
            g_dbus_connection_register_object(bus_.get(), path, node->interfaces[1], &table, this,
                                              nullptr, nullptr);
        }
        // Who sees the name expects the objects:
        // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer)
        name_ = g_bus_own_name_on_connection(bus_.get(), "org.freedesktop.PackageKit",
                                             G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                             nullptr);
    }
    ~FakePackageService() {
        g_bus_unown_name(name_);
        g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    }
    FakePackageService(const FakePackageService &) = delete;
    FakePackageService &operator=(const FakePackageService &) = delete;

    std::vector<std::string> owners;  // of the file
    std::vector<std::string> updates; // that there are
    bool fails = false;
    std::string searchedFile;

  private:
    void answer(const std::string &path, const std::string &method, GVariant *arguments,
                GDBusMethodInvocation *invocation) {
        if (method == "CreateTransaction") {
            transaction_ = transaction_ == "/1" ? "/2" : "/1";
            g_dbus_method_invocation_return_value(invocation,
                                                  g_variant_new("(o)", transaction_.c_str()));
            return;
        }
        g_dbus_method_invocation_return_value(invocation, nullptr);
        if (method == "SearchFiles") {
            const freedesktop::GlibPointer<GVariant> files(g_variant_get_child_value(arguments, 1));
            const char *file = nullptr;
            g_variant_get_child(files.get(), 0, "&s", &file);
            searchedFile = file;
        }
        for (const auto &package : method == "SearchFiles" ? owners : updates) {
            signal(path, "Package", g_variant_new("(uss)", 1U, package.c_str(), "A summary"));
        }
        signal(path, "Finished", g_variant_new("(uu)", fails ? 2U : 1U, 5U));
        signal(path, "Destroy", nullptr);
    }

    void signal(const std::string &path, const char *name, GVariant *arguments) {
        g_dbus_connection_emit_signal(bus_.get(), nullptr, path.c_str(),
                                      "org.freedesktop.PackageKit.Transaction", name, arguments,
                                      nullptr);
    }

    freedesktop::GlibPointer<GDBusConnection> bus_;
    unsigned name_ = 0;
    std::string transaction_;
};

TEST(PackageKitUpdatesTest, TellsWhatTheServiceKnowsOfOurPackage) {
    PrivateDesktop desktop({.windowManager = desktop::WindowManager::none});
    desktop.startSessionBus();
    const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
    const Variable systemBus("DBUS_SYSTEM_BUS_ADDRESS", address);
    freedesktop::GlibMainLoop loop;
    freedesktop::PackageKitUpdates updates(loop, "/opt/lumo/bin/lumo");
    const auto check = [&] {
        std::optional<UpdateResult> result;
        updates.checkForUpdates([&](const UpdateResult &each) { result = each; });
        EXPECT_FALSE(result) << "not before checkForUpdates() has returned";
        EXPECT_TRUE(runUntil(loop, [&] { return result.has_value(); }));
        return result.value_or(UpdateResult{});
    };
    using Kind = UpdateResult::Kind;
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
    auto service = std::make_unique<FakePackageService>(address);
    EXPECT_EQ(check(), (UpdateResult{Kind::notInstalledByPackage, {}}));
    EXPECT_EQ(service->searchedFile, "/opt/lumo/bin/lumo");
    service->owners = {"lumo;1.0.0;amd64;installed"};
    service->updates = {"lumo-extras;9.9;all;stable", "other;3;all;stable"};
    EXPECT_EQ(check(), (UpdateResult{Kind::upToDate, {}}));
    service->updates.emplace_back("lumo;1.4.2;amd64;stable");
    EXPECT_EQ(check(), (UpdateResult{Kind::newerVersion, "1.4.2"}));
    service->fails = true;
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
    service.reset();
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
}

} // namespace
} // namespace lumo::x11
