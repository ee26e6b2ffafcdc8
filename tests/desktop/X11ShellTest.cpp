#include "bus/RunUntil.h"
#include "bus/StatusNotifierHost.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/x11/X11StatusItem.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/X11Screens.h"

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

// A status item on a private desktop, and its reports.
class StatusItemTest : public testing::Test {
  protected:
    void makeItem() {
        bus = std::make_unique<freedesktop::SessionBus>(loop);
        item = std::make_unique<X11StatusItem>(*connection, formats, screens, loop, *bus);
        clicks =
            item->onRightMouseUp([this](const StatusItemPlace &place) { places.push_back(place); });
        item->setToolTip("Lumo - Focus and privacy");
        setDot({1, 0, 0, 1});
    }

    void setDot(const Color &color) { item->setTitle({"\u25CF", color, 15, true, -0.5}); }

    bool eventually(const std::function<bool()> &condition) { return runUntil(loop, condition); }

    // Where pixels of nearly that colour are along the screen's upper and lower edge, as their
    // middle; absent when there are none, and when they lie further apart than those of one dot.
    std::optional<desktop::Spot> findDot(int red, int green, int blue) {
        std::vector<int> columns;
        std::vector<int> rows;
        const auto screen = desktop.session().screenArea();
        constexpr int depth = 48; // of a panel
        for (const int top : {0, screen.height - depth}) {
            const auto picture = desktop.session().picture({0, top, screen.width, depth});
            for (int row = 0; row < depth; ++row) {
                for (int column = 0; column < screen.width; ++column) {
                    const auto pixel = picture.at(column, row);
                    if (std::abs(pixel.red - red) + std::abs(pixel.green - green) +
                            std::abs(pixel.blue - blue) <
                        30) {
                        columns.push_back(column);
                        rows.push_back(top + row);
                    }
                }
            }
        }
        if (columns.size() < 20) {
            return std::nullopt;
        }
        const auto [left, right] = std::ranges::minmax(columns);
        const auto [top, bottom] = std::ranges::minmax(rows);
        constexpr int largest = 24;
        return right - left > largest || bottom - top > largest
                   ? std::nullopt
                   : std::optional(desktop::Spot{(left + right) / 2, (top + bottom) / 2});
    }

    std::optional<desktop::Area> toolTip() {
        auto &session = desktop.session();
        for (const auto window : session.stacking()) {
            if (session.titleOf(window) == "Lumo Tool Tip" && session.isViewable(window)) {
                return session.areaOf(window);
            }
        }
        return std::nullopt;
    }

    // Comes when the pointer rests on the dot, beside it, and goes with the pointer or a click.
    void lookAtToolTip() {
        auto &session = desktop.session();
        const auto screen = session.screenArea();
        for (const bool isClicked : {false, true}) {
            session.movePointerTo(dot->x, dot->y);
            ASSERT_TRUE(eventually([&] { return toolTip().has_value(); }));
            const auto tip = *toolTip();
            EXPECT_TRUE(tip.x >= 0 && tip.x + tip.width <= screen.width && tip.y >= 0 &&
                        tip.y + tip.height <= screen.height);
            EXPECT_TRUE(tip.y > dot->y || tip.y + tip.height <= dot->y);
            const auto picture = session.picture(tip);
            int bright = 0;
            for (int at = 0; at < tip.width * tip.height; ++at) {
                bright += picture.at(at % tip.width, at / tip.width).red > 160 ? 1 : 0;
            }
            EXPECT_GT(bright, 100) << "text";
            if (isClicked) {
                session.click(*dot, 1);
            } else {
                session.movePointerTo(screen.width / 2, screen.height / 2);
            }
            EXPECT_TRUE(eventually([&] { return !toolTip(); }));
        }
    }

    bool dotAppears(int red, int green, int blue) {
        constexpr double longestStart = 30; // seconds, of a panel
        return runUntil(
            loop, [&] { return (dot = findDot(red, green, blue)).has_value(); }, longestStart);
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

TEST_F(StatusItemTest, RightClicksInATrayThatComesLater) {
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

        EXPECT_TRUE(item->isShown());
        lookAtToolTip();
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
        EXPECT_TRUE(eventually([&] { return !item->isShown(); }));
    }
}

// Some panels offer both and keep the right button to themselves on the bus.
TEST_F(StatusItemTest, TrayWithARowIsPreferredOfAPanelThatOffersBoth) {
    desktop.startSessionBus();
    const auto address = desktop.environment().at("DBUS_SESSION_BUS_ADDRESS");
    const Variable busAddress("DBUS_SESSION_BUS_ADDRESS", address);
    test::StatusNotifierHost panel(address);
    panel.setHost(true);
    makeItem();
    auto &session = desktop.session();
    const auto icon = [&]() -> std::optional<xcb_window_t> {
        const auto windows = session.stacking();
        const auto found = std::ranges::find_if(windows, [&](auto window) {
            return session.titleOf(window) == "Lumo - Focus and privacy";
        });
        return found == windows.end() ? std::nullopt : std::optional(*found);
    };
    const auto isInTray = [&] { return icon().has_value(); };
    const auto statusBecomes = [&](const std::string &status) {
        return eventually([&] { return !panel.items().empty(); }) && eventually([&] {
                   panel.askForProperties();
                   return eventually([&] { return !panel.properties().empty(); }) &&
                          panel.properties().find("'Status': <'" + status) != std::string::npos;
               });
    };
    EXPECT_TRUE(statusBecomes("Active"));
    EXPECT_FALSE(isInTray());

    auto *server = session.connection();
    const auto showTray = [&](bool isRow) {
        const auto tray = xcb_generate_id(server);
        xcb_create_window(server, XCB_COPY_FROM_PARENT, tray, session.root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        if (isRow) {
            const std::uint32_t horizontal = 0;
            xcb_change_property(server, XCB_PROP_MODE_REPLACE, tray,
                                session.atom("_NET_SYSTEM_TRAY_ORIENTATION"), XCB_ATOM_CARDINAL, 32,
                                1, &horizontal);
        }
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
        return tray;
    };
    const auto end = [&](xcb_window_t tray) {
        xcb_destroy_window(server, tray);
        xcb_flush(server);
    };

    const auto copier = showTray(false);
    EXPECT_FALSE(freedesktop::runUntil(loop, isInTray, 0.2))
        << "one that only copies icons to the bus leaves their windows on the desktop";
    end(copier);

    const auto tray = showTray(true);
    EXPECT_TRUE(eventually(isInTray));
    EXPECT_TRUE(statusBecomes("Passive"));

    end(tray);
    EXPECT_TRUE(statusBecomes("Active"));
    EXPECT_FALSE(isInTray());
}

class PanelTest : public StatusItemTest, public testing::WithParamInterface<std::string> {};

// They have a tray, and listen on the session bus as well.
TEST_P(PanelTest, OneDotThatOpensThePopover) {
    desktop.startSessionBus(desktop::MessageBus::Services::ofTheSystem);
    const Variable busAddress("DBUS_SESSION_BUS_ADDRESS",
                              desktop.environment().at("DBUS_SESSION_BUS_ADDRESS"));
    makeItem();
    // LXQt's session names the latter, where its panel is told what to show.
    const auto panel = desktop.start({GetParam()}, {{"GSETTINGS_BACKEND", "memory"},
                                                    {"XDG_CONFIG_DIRS", "/etc/xdg:/usr/share"}});
    ASSERT_TRUE(dotAppears(255, 0, 0)) << panel->report();
    setDot({0, 1, 0, 1});
    ASSERT_TRUE(dotAppears(0, 255, 0));
    // A panel that is still busy may lay its items out anew, also while the pointer is on its way.
    const auto isGone = [&] { return !findDot(0, 255, 0); };
    EXPECT_TRUE(!freedesktop::runUntil(loop, isGone, 1) || dotAppears(0, 255, 0))
        << "another one comes";
    for (int tries = 0; tries < 3 && places.empty() && dotAppears(0, 255, 0); ++tries) {
        desktop.session().click(*dot, 3);
        freedesktop::runUntil(
            loop, [&] { return !places.empty(); }, 4);
    }
    ASSERT_FALSE(places.empty()) << panel->report();
    EXPECT_EQ(places[0].pointer,
              (Point{double(dot->x), desktop.session().screenArea().height - double(dot->y)}));
}

INSTANTIATE_TEST_SUITE_P(All, PanelTest, testing::Values("lxqt-panel", "mate-panel", "xfce4-panel"),
                         [](const auto &row) { return row.param.substr(0, row.param.find('-')); });

} // namespace
} // namespace lumo::x11
