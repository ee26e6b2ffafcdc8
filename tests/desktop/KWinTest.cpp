#include "DragAndResize.h"
#include "Look.h"
#include "ManagersTable.h"
#include "Panes.h"
#include "bus/BusService.h"
#include "bus/RunUntil.h"
#include "bus/StatusNotifierHost.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/GlibSignal.h"
#include "wayland/PrivateKWin.h"
#include "wayland/PrivateSway.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <org.freedesktop.login1.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

constexpr Area display = {0, 0, 1280, 720};

class KWinTest : public testing::Test {
  protected:
    // Starts three applications whose windows overlap in a row, the first in front, and the real
    // program.
    void show(const KWinOptions &options = {}, const Preferences &more = {},
              const std::string &front = "Red") {
        kwin = std::make_unique<PrivateKWin>(options);
        for (auto &[name, window] : windows) {
            window.program =
                kwin->startSample(name, window.colour, window.area.width, window.area.height);
            place(name, window.area);
        }
        restart(more);
        EXPECT_EQ(wrongWith(clear(front)), "");
    }

    void restart(const Preferences &more) {
        lumo.reset();
        auto preferences = more;
        preferences.merge(look.preferences());
        lumo = kwin->startLumo(preferences);
    }

    void place(const std::string &name, const Area &area) {
        windows[name].area = area;
        act(name, "w.frameGeometry = {x: " + std::to_string(area.x) +
                      ", y: " + std::to_string(area.y) + ", width: " + std::to_string(area.width) +
                      ", height: " + std::to_string(area.height) + "}");
    }

    void act(const std::string &name, const std::string &code) {
        kwin->script("each('" + name + "', function (w) { " + code + "; });");
    }

    // The three windows where they are, that one in front of the others.
    std::vector<Pane> clear(const std::string &name) {
        if (std::erase(order, name) > 0) {
            order.push_back(name);
        }
        std::vector<Pane> panes;
        for (const auto &each : order) {
            panes.push_back({windows[each].area, windows[each].colour, each == name});
        }
        return panes;
    }

    std::vector<Pane> withoutEffect() {
        auto panes = clear("Red");
        panes.insert(panes.begin(), {display, "#000000"});
        std::ranges::for_each(panes, [](Pane &pane) { pane.isClear = true; });
        return panes;
    }

    Picture picture(const std::string &output = "Virtual-0") {
        return screen == nullptr ? kwin->picture(output) : screen->picture();
    }

    // The largest difference of two pixels side by side: half of that where text is enlarged.
    static int steepestEdge(const Picture &picture, const Area &part) {
        int steepest = 0;
        for (int y = part.y; y < part.bottom(); ++y) {
            for (int x = part.x + 1; x < part.right(); ++x) {
                steepest = std::max(steepest, distance(picture.at(x - 1, y), picture.at(x, y)));
            }
        }
        return steepest;
    }

    // A bright window with exactly these edges lies over what is covered.
    bool isOver(const Area &area) {
        const auto shown = picture();
        const auto isBright = [&](int x, int y) {
            const auto colour = shown.at(x, y);
            return std::min({colour.red, colour.green, colour.blue}) > 180;
        };
        const int x = area.x + area.width / 2;
        const int y = area.y + area.height / 2;
        return isBright(area.x + 2, y) && !isBright(area.x - 1, y) &&
               isBright(area.right() - 3, y) && !isBright(area.right(), y) &&
               isBright(x, area.y + 2) && !isBright(x, area.y - 1) &&
               isBright(x, area.bottom() - 3) && !isBright(x, area.bottom());
    }

    std::string wrongWith(const std::vector<Pane> &expected,
                          const std::string &output = "Virtual-0", double scale = 1) {
        std::string wrong;
        const double end = now() + 20;
        do {
            wrong = expectation.wrongIn(picture(output), expected, scale);
        } while (!wrong.empty() && now() < end);
        return wrong.empty() ? wrong : output + " at " + wrong + '\n' + lumo->report();
    }

    static bool eventually(const std::function<bool()> &condition) {
        const double end = now() + 20;
        while (!condition() && now() < end) {
            pauseBriefly();
        }
        return condition();
    }

    long said(const std::string &name, const std::string &line) {
        return std::ranges::count(windows[name].program->outputLines(), line);
    }

    struct Window {
        Area area;
        std::string colour;
        std::unique_ptr<ChildProcess> program = nullptr;
    };

    const Look look{"dim", 1};
    Panes expectation{look, "#000000"};
    std::unique_ptr<PrivateSway> screen; // that shows KWin in its one window, if any
    std::unique_ptr<PrivateKWin> kwin;
    std::map<std::string, Window> windows = [] {
        std::map<std::string, Window> all;
        all["Blue"] = {{640, 380, 420, 300}, "#3c64e0"};
        all["Green"] = {{360, 220, 420, 300}, "#3cb450"};
        all["Red"] = {{60, 80, 420, 300}, "#d83c30"};
        return all;
    }();
    std::vector<std::string> order = {"Blue", "Green", "Red"}; // from the bottom to the top
    std::unique_ptr<ChildProcess> lumo;
};

TEST_F(KWinTest, FocusByClickAndKeyboard) {
    show();
    int arrived = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        const std::string name = std::array{"Green", "Blue", "Red"}[i % 3];
        const auto before = said(name, "click");
        // Where no other window covers it, whatever the order.
        const std::map<std::string, Spot> spots = {
            {"Red", {90, 110}}, {"Green", {570, 350}}, {"Blue", {1000, 600}}};
        kwin->click(spots.at(name));
        arrived += eventually([&] { return said(name, "click") > before; }) ? 1 : 0;
        EXPECT_EQ(wrongWith(clear(name)), "") << i;
    }
    EXPECT_EQ(arrived, 10);
    for (int i = 0; i < 200; ++i) {
        windows["Blue"].program->writeLine("window More #3c64e0 420 300");
    }
    order = {"Green", "Blue", "Red"};
    EXPECT_TRUE(eventually([&] {
        kwin->script("workspace.clientList().forEach(function (w) { if (w.caption.indexOf('More') "
                     "=== 0) { w.frameGeometry = {x: 640, y: 380, width: 420, height: 300}; } })");
        kwin->click({90, 110});
        return expectation.wrongIn(kwin->picture(), clear("Red")).empty();
    })) << "hundreds of windows\n"
        << lumo->report();
}

TEST_F(KWinTest, WhatWindowsDo) {
    show();
    kwin->press({EvdevKey::option, EvdevKey::tab});
    ASSERT_TRUE(eventually([&] { return said("Green", "focus") + said("Blue", "focus") > 2; }));
    const auto next = said("Green", "focus") > 1 ? "Green" : "Blue";
    EXPECT_EQ(wrongWith(clear(next)), "") << "focus by keyboard";
    kwin->click({90, 110});

    windows["Red"].program->writeLine("menu 350 200 #f0d0f0 200 90");
    auto expected = clear("Red");
    expected.push_back({{410, 280, 200, 90}, "#f0d0f0"});
    EXPECT_EQ(wrongWith(expected), "") << "a menu beyond its window's edge";
    windows["Red"].program->writeLine("unmenu");

    windows["Red"].program->writeLine("dialog Sheet #d0f0e0 200 120");
    ASSERT_TRUE(eventually([&] { return said("Red", "focus") > 2; }));
    act("Sheet", "w.frameGeometry = {x: 120, y: 120, width: 200, height: 120}");
    expected = clear("Red");
    expected.push_back({{120, 120, 200, 120}, "#d0f0e0"});
    EXPECT_EQ(wrongWith(expected), "") << "a dialog";
    act("Sheet", "w.closeWindow()");
    EXPECT_EQ(wrongWith(clear("Red")), "") << "a dialog that closes";

    act("Blue", "w.keepAbove = true");
    expected = clear("Red");
    expected.front().isClear = true;
    EXPECT_EQ(wrongWith({expected[1], expected[2], expected[0]}), "") << "kept above";
    act("Blue", "w.keepAbove = false");

    act("Red", "w.minimized = true");
    std::erase(order, "Red");
    const auto focused = [&](const char *name) { return said(name, "focus") > said(name, "blur"); };
    ASSERT_TRUE(eventually([&] { return focused("Green") || focused("Blue"); }));
    EXPECT_EQ(wrongWith(clear(focused("Green") ? "Green" : "Blue")), "") << "minimised";
    act("Red", "w.minimized = false; workspace.activeClient = w");
    order.emplace_back("Red");
    EXPECT_EQ(wrongWith(clear("Red")), "") << "restored";

    kwin->script("workspace.desktops = 2; workspace.currentDesktop = 2");
    EXPECT_EQ(wrongWith({}), "") << "an empty desktop";
    kwin->script(
        "workspace.currentDesktop = 1; each('Red', function (w) { workspace.activeClient = w; })");
    EXPECT_EQ(wrongWith(clear("Red")), "") << "back on the first one";

    windows["Red"].program->writeLine("fill");
    EXPECT_EQ(wrongWith({{display, windows["Red"].colour}}), "") << "full screen";
    windows["Red"].program->writeLine("unfill");
    EXPECT_EQ(wrongWith(clear("Red")), "") << "after full screen";

    act("Red", "w.closeWindow()");
    std::erase(order, "Red");
    ASSERT_TRUE(eventually([&] { return focused("Green") || focused("Blue"); }));
    EXPECT_EQ(wrongWith(clear(focused("Green") ? "Green" : "Blue")), "") << "closed";
}

TEST_F(KWinTest, WhatTrailsBehindDragAndResize) {
    show();
    auto &red = windows["Red"];
    dragAndResize(
        {.moveTo = [&](Spot spot) { kwin->moveTo(spot); },
         .setKey = [&](EvdevKey key, bool isDown) { kwin->setKey(key, isDown); },
         .setButton = [&](bool isDown, EvdevButton button) { kwin->setButton(isDown, button); },
         .trail = [&] { return expectation.trailIn(picture(), 90, red.colour); },
         .wrong = [&] { return wrongWith(clear("Red")); }},
        red.area);
}

TEST_F(KWinTest, HotKeysAndShake) {
    show({}, {{"shakeToReveal", false}});
    EXPECT_TRUE(eventually([&] {
        kwin->press({EvdevKey::command, EvdevKey::option, EvdevKey::tab});
        return expectation.wrongIn(kwin->picture(), withoutEffect()).empty();
    })) << "Peek";
    EXPECT_EQ(wrongWith(clear("Red")), "") << "after Peek";
    kwin->press({EvdevKey::control, EvdevKey::space});
    EXPECT_EQ(wrongWith(withoutEffect()), "") << "off";
    const auto shake = [&] {
        for (const int x : {500, 380, 500, 380, 500, 380}) {
            kwin->moveTo({x, 40});
            const double until = now() + 0.05; // as a hand does
            eventually([&] { return now() > until; });
        }
    };
    shake();
    EXPECT_EQ(wrongWith(clear("Red")), "") << "on again by a shake";
    EXPECT_TRUE(eventually([&] { // soon: what is left of the last change has its time
        const auto sleeps = lumo->voluntarySwitches();
        const double until = now() + 3;
        eventually([&] { return now() > until; });
        return lumo->voluntarySwitches() == sleeps;
    })) << "with both scripts loaded";
    kwin->press({EvdevKey::control, EvdevKey::option, EvdevKey::command, EvdevKey::d});
    EXPECT_EQ(wrongWith(withoutEffect()), "") << "the emergency stop";
    EXPECT_EQ(said("Red", "down 57"), 0) << "a hot key is not the window's";

    lumo->signal(SIGTERM);
    EXPECT_EQ(lumo->waitForExit(), 0);
    for (const auto *name : {"Desktop", "Pointer"}) {
        EXPECT_EQ(kwin->call("/Scripting", "org.kde.kwin.Scripting.isScriptLoaded",
                             std::string("app.lumo.Lumo.") + name),
                  "(false,)");
    }
    kwin->press({EvdevKey::control, EvdevKey::space});
    EXPECT_TRUE(eventually([&] { return said("Red", "down 57") > 0; })) << "once Lumo has ended";

    kwin->script("registerShortcut('Other', 'Other', 'Ctrl+Space', function () {})");
    lumo = kwin->startLumo(look.preferences());
    EXPECT_TRUE(eventually([&] {
        return std::ranges::count(lumo->outputLines(),
                                  "[Lumo] Toggle hotkey register failed, status=-9878") == 1;
    })) << lumo->report();
}

TEST_F(KWinTest, PanelPopoverAndASecondStart) {
    show();
    auto &red = *windows["Red"].program;
    red.writeLine("panel #f0d0f0 30");
    auto expected = clear("Red");
    expected.push_back({{0, 690, 1280, 30}, "#f0d0f0"});
    EXPECT_EQ(wrongWith(expected), "") << "a panel stays clear";
    ManagersTable::shared().keepPicture("kwin-wayland", kwin->picture());

    freedesktop::GlibMainLoop loop;
    test::StatusNotifierHost host(kwin->bus().address());
    host.setHost(true);
    const auto open = [&](Spot told) {
        host.callItem("ContextMenu", told.x, told.y);
        freedesktop::runUntil(
            loop, [&] { return false; }, 0.1);
    };
    ASSERT_TRUE(freedesktop::runUntil(loop, [&] { return !host.items().empty(); }));
    kwin->moveTo({1000, 50});
    open({300, 700});
    EXPECT_TRUE(eventually([&] { return isOver({170, 384, 260, 300}); })) << "at the item";
    kwin->click({90, 110});
    EXPECT_EQ(wrongWith(expected), "") << "closed by a click outside";
    kwin->moveTo({1000, 50});
    open({5, 5});
    EXPECT_TRUE(eventually([&] { return isOver({870, 6, 260, 300}); })) << "at the pointer";
    open({5, 5});
    EXPECT_EQ(wrongWith(expected), "") << "closed by the item";

    const auto second = kwin->startLumo(look.preferences());
    EXPECT_EQ(second->waitForExit(), 0);
    EXPECT_THAT(second->outputLines(),
                testing::ElementsAre("[Lumo] already running on this display"));
    EXPECT_TRUE(eventually([&] {
        act("Lumo Settings", "w.closeWindow()");
        return said("Red", "focus") > 3;
    })) << "the second one shows the settings";
    red.writeLine("unpanel");
    EXPECT_EQ(wrongWith(clear("Red")), "") << "the first one still knows of panels";

    kwin->startLumo(look.preferences())->waitForExit();
    ASSERT_TRUE(eventually([&] { return said("Red", "blur") > 3; }));
    kwin->setOutput("Virtual-0", true, 2);
    EXPECT_TRUE(eventually([&] {
        act("Lumo Settings", "w.frameGeometry = {x: 0, y: 0, width: w.width, height: w.height}");
        return steepestEdge(picture(), {80, 120, 240, 180}) > 160;
    })) << "the text in the sidebar of a window that was open";
    lumo->signal(SIGTERM);
    EXPECT_EQ(lumo->waitForExit(), 0) << lumo->report();
}

// The system's service for sessions, which alone may unlock the screen without a password.
class LoginService {
  public:
    explicit LoginService(const std::string &address)
        : service_(address)
        , manager_(dbus_login_manager_skeleton_new())
        , session_(dbus_login_session_skeleton_new())
        , questions_(freedesktop::connectToSignal(manager_.get(), "handle-get-session",
                                                  G_CALLBACK(&LoginService::getSession), this)) {
        service_.offer(manager_.get(), "/org/freedesktop/login1");
        service_.offer(session_.get(), path);
        service_.takeName("org.freedesktop.login1");
    }
    LoginService(const LoginService &) = delete;
    LoginService &operator=(const LoginService &) = delete;

    void unlock() { dbus_login_session_emit_unlock(session_.get()); }

    bool isAsked = false;

  private:
    static gboolean getSession(DbusLoginManager *manager, GDBusMethodInvocation *invocation,
                               const char * /*identifier*/, gpointer self) {
        dbus_login_manager_complete_get_session(manager, invocation, path);
        static_cast<LoginService *>(self)->isAsked = true;
        return TRUE;
    }

    static constexpr const char *path = "/org/freedesktop/login1/session/test";

    test::BusService service_;
    freedesktop::GlibPointer<DbusLoginManager> manager_;
    freedesktop::GlibPointer<DbusLoginSession> session_;
    Handle questions_;
};

TEST_F(KWinTest, NothingAboveTheLocker) {
    screen = std::make_unique<PrivateSway>();
    show({.screen = (screen->path("run") / "wayland-1").string()});
    freedesktop::GlibMainLoop loop;
    LoginService logins(kwin->bus().address());
    test::StatusNotifierHost host(kwin->bus().address());
    host.setHost(true);
    ASSERT_TRUE(
        freedesktop::runUntil(loop, [&] { return logins.isAsked && !host.items().empty(); }));
    const auto lockAndUnlock = [&] {
        kwin->call("/ScreenSaver", "org.freedesktop.ScreenSaver.SetActive", "true");
        EXPECT_EQ(wrongWith({{display, "#000000"}}), "") << "locked";
        logins.unlock();
    };
    kwin->moveTo({1000, 50});
    host.callItem("ContextMenu", 5, 5);
    EXPECT_TRUE(eventually([&] { return isOver({870, 6, 260, 300}); })) << "the popover";
    lockAndUnlock();
    EXPECT_EQ(wrongWith(clear("Red")), "") << "without the popover, which has lost the focus";

    restart({{"hasCompletedOnboarding", false}});
    const auto isWelcoming = [&] { return isOver({440, 120, 400, 480}); };
    EXPECT_TRUE(eventually(isWelcoming));
    lockAndUnlock();
    EXPECT_TRUE(eventually(isWelcoming)) << "unlocked";
}

TEST_F(KWinTest, PrivacyCover) {
    show({},
         {{"privacyCoverEnabled", true},
          {"privacyCoverBundleID", std::string("Green")},
          {"privacyCoverKeepAbove", true}},
         "Green");
    kwin->click({90, 110});
    ASSERT_TRUE(eventually([&] { return said("Red", "click") > 0; }));
    std::erase(order, "Red");
    order.emplace_back("Red");
    EXPECT_EQ(wrongWith(clear("Green")), "") << "in front again";
    act("Green", "w.minimized = true");
    std::erase(order, "Green");
    kwin->click({90, 110});
    EXPECT_EQ(wrongWith(clear("")), "") << "all is covered while it is minimised";
}

TEST_F(KWinTest, WindowsAndMenusOfXApplications) {
    show({.hasXwayland = true});
    auto &other = windows["Other"] = {{500, 10, 300, 200}, "#a040a0", nullptr};
    order.insert(order.begin(), "Other");
    other.program = kwin->startXSample("Other");
    other.program->writeLine("open\t500\t10\t300\t200\t#a040a0\t-\t-\t0\t0\t0\tOther");
    EXPECT_TRUE(eventually([&] {
        place("Other", {500, 10, 300, 200});
        const auto colour = kwin->picture().at(790, 30);
        return colour.red > colour.green + 20;
    }));
    kwin->click({700, 50});
    auto expected = clear("Other");
    EXPECT_EQ(wrongWith(expected), "") << "focus by click";
    other.program->writeLine("open 700 150 200 120 #f0d0f0 POPUP_MENU - 1 0 0 Menu");
    expected.push_back({{700, 150, 200, 120}, "#f0d0f0"});
    EXPECT_EQ(wrongWith(expected), "") << "a menu beyond its window's edge";
    other.program->writeLine("close 1");
    kwin->setOutput("Virtual-0", true, 2);
    place("Other", {200, 40, 300, 200});
    place("Green", {60, 100, 420, 200});
    place("Blue", {20, 10, 300, 60});
    place("Red", {400, 200, 200, 140});
    EXPECT_EQ(wrongWith(clear("Other"), "Virtual-0", 2), "");
}

TEST_F(KWinTest, DisplaysComeAndGoAndScale) {
    show({.outputs = 2});
    const std::string second = "Virtual-1";
    // The other display is covered less than the one with the focus.
    const auto isClearOnSecond = [&](bool isClear) {
        const auto picture = kwin->picture(second);
        const auto mean = picture.mean({600, 500, 200, 200});
        const bool isBlue = picture.at(200, 200) == Colour::parse(windows["Blue"].colour);
        return isBlue == isClear && mean.red > 5 && mean.red < 60;
    };
    EXPECT_TRUE(eventually([&] { return isClearOnSecond(false); }));
    place("Blue", {1400, 100, 420, 300});
    std::erase(order, "Blue");
    EXPECT_TRUE(eventually([&] { return isClearOnSecond(true); }))
        << "one clear window on each display";
    EXPECT_EQ(wrongWith(clear("Red")), "");
    for (int i = 0; i < 3; ++i) {
        kwin->setOutput(second, false);
        kwin->setOutput(second, true);
    }
    place("Blue", {1400, 100, 420, 300});
    EXPECT_TRUE(eventually([&] { return isClearOnSecond(true); })) << "the display is back";
    for (const double scale : {1.5, 2.0, 1.0}) {
        kwin->setOutput("Virtual-0", true, scale);
        place("Green", {300, 60, 420, 280});
        place("Red", {20, 20, 351, 201});
        EXPECT_EQ(wrongWith(clear("Red"), "Virtual-0", scale), "") << scale;
    }
    kwin->setOutput("Virtual-0", true, 1.5, 1);
    place("Green", {100, 60, 300, 280});
    EXPECT_EQ(wrongWith(clear("Red"), "Virtual-0", 1.5), "") << "turned";

    kwin->setOutput("Virtual-0", true);
    place("Red", {60, 80, 420, 300});
    place("Green", {500, 80, 420, 300});
    place("Blue", {1400, 100, 420, 300});
    restart({{"multiScreenMode", std::string("global")}});
    EXPECT_EQ(wrongWith(clear("Red")), "");
    EXPECT_TRUE(eventually([&] { return isClearOnSecond(false); }))
        << "one clear window on all displays";
}

TEST_F(KWinTest, BlurIsKWins) {
    show();
    lumo.reset();
    auto preferences = look.preferences();
    preferences["effectMode"] = std::string("softBlur");
    lumo = kwin->startLumo(preferences);
    // How much the colour changes across the edge between the two covered windows.
    const auto edge = [&] {
        const auto picture = kwin->picture();
        const auto outside = picture.mean({785, 400, 8, 100});
        const auto inside = picture.mean({767, 400, 8, 100});
        return std::abs(outside.blue - inside.blue);
    };
    const auto isClear = [&] { return kwin->picture().at(100, 100) == Colour::parse("#d83c30"); };
    kwin->call("/Effects", "org.kde.kwin.Effects.loadEffect", "blur");
    EXPECT_TRUE(eventually([&] { return edge() < 30 && isClear(); })) << edge();
    kwin->call("/Effects", "org.kde.kwin.Effects.unloadEffect", "blur");
    EXPECT_TRUE(eventually([&] { return edge() > 60 && isClear(); })) << edge();
}

TEST_F(KWinTest, WhatEnds) {
    show();
    lumo->signal(SIGKILL);
    EXPECT_EQ(wrongWith(withoutEffect()), "") << "killed";
    lumo = kwin->startLumo(look.preferences());
    EXPECT_EQ(wrongWith(clear("Red")), "");
    kwin->bus().stop();
    kwin->click({1000, 600});
    ASSERT_TRUE(eventually([&] { return said("Blue", "click") > 0; }));
    EXPECT_TRUE(lumo->isRunning()) << "without a session bus";
    kwin->process().kill();
    EXPECT_EQ(lumo->waitForExit(), 1);
    EXPECT_EQ(
        std::ranges::count(lumo->outputLines(), "[Lumo] the connection to the compositor was lost"),
        1);
}

TEST_F(KWinTest, OnlyWithADesktopEntryThatAsks) {
    kwin = std::make_unique<PrivateKWin>(KWinOptions{.trust = KWinOptions::Trust::desktopEntries});
    lumo = kwin->startLumo(look.preferences());
    EXPECT_EQ(lumo->waitForExit(), 1);
    EXPECT_THAT(lumo->outputLines(),
                testing::ElementsAre(testing::HasSubstr("start it by ./dev run")));
    // Another session: KWin looks for new entries only now and then.
    kwin = std::make_unique<PrivateKWin>(KWinOptions{.trust = KWinOptions::Trust::desktopEntries});
    const auto folder = kwin->path("data") / "applications";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "lumo.desktop")
        << "[Desktop Entry]\nType=Application\nName=Lumo\nExec="
        << (kwin->path("bin") / "lumo").string()
        << "\nX-KDE-Wayland-Interfaces=org_kde_plasma_window_management\n";
    lumo = kwin->startLumo(look.preferences());
    windows["Red"].program = kwin->startSample("Red", windows["Red"].colour, 420, 300);
    place("Red", windows["Red"].area);
    order = {"Red"};
    EXPECT_EQ(wrongWith(clear("Red")), "");
}

} // namespace
} // namespace lumo::desktop
