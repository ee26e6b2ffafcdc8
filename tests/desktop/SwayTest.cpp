#include "DragAndResize.h"
#include "Look.h"
#include "ManagersTable.h"
#include "Panes.h"
#include "wayland/PrivateSway.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

constexpr Area display = {0, 0, 1280, 720};
constexpr auto npos = std::string::npos;

class SwayTest : public testing::Test {
  protected:
    explicit SwayTest(
        const SwayOptions &options =
            {.configuration = "for_window [app_id=\"^(Red|Green|Blue)$\"] floating enable"})
        : sway(options) {}

    // Starts three applications whose floating windows overlap in a row, the first in front, and
    // the real program.
    void show() { show(threeWithClear("Red")); }

    void show(const std::vector<Pane> &panes) {
        for (auto &[name, window] : windows) {
            window.program =
                sway.startSample(name, window.colour, window.area.width, window.area.height);
            place(name, window.area);
        }
        sway.command("[app_id=Red] focus");
        lumo = sway.startLumo(look.preferences());
        EXPECT_EQ(wrongWith(panes), "");
    }

    void place(const std::string &name, const Area &area) {
        sway.command("[app_id=" + name + "] move absolute position " + std::to_string(area.x) +
                     " " + std::to_string(area.y));
    }

    // The three windows where they are, that one in front of the others.
    std::vector<Pane> threeWithClear(const std::string &clear) {
        std::erase(order, clear);
        order.push_back(clear);
        std::vector<Pane> panes;
        for (const auto &name : order) {
            panes.push_back({windows[name].area, windows[name].colour, name == clear});
        }
        return panes;
    }

    // Over sway's own background.
    std::string wrongNow(const std::vector<Pane> &panes, const std::string &output, double scale) {
        const auto wrong = expectation.wrongIn(sway.picture(output), panes, scale);
        return wrong.empty() ? wrong : output + " at " + wrong;
    }

    std::string wrongWith(const std::vector<Pane> &panes, const std::string &output = "HEADLESS-1",
                          double scale = 1) {
        std::string wrong;
        const double end = now() + 8;
        do {
            wrong = wrongNow(panes, output, scale);
        } while (!wrong.empty() && now() < end);
        return wrong.empty() ? wrong : wrong + '\n' + lumo->report();
    }

    std::vector<Pane> threeWithoutEffect() {
        auto panes = threeWithClear(order.back());
        panes.insert(panes.begin(), {display, "#3f3f3f"});
        for (auto &pane : panes) {
            pane.isClear = true;
        }
        return panes;
    }

    // Calls a method of the object that Lumo has at that path on the session's bus.
    void call(const std::string &path, const std::string &method,
              const std::vector<std::string> &arguments) {
        std::vector<std::string> command = {"gdbus",  "call",          "--session",
                                            "--dest", "app.lumo.Lumo", "--object-path",
                                            path,     "--method",      method};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(sway.start(command)->waitForExit(), 0) << method;
    }

    void act(const std::string &action, const std::string &parameters = "[]") {
        call("/app/lumo/Lumo", "org.freedesktop.Application.ActivateAction",
             {action, parameters, "{}"});
    }

    bool isShown(const std::string &title) {
        return sway.ask("get_tree").find('"' + title + '"') != npos;
    }

    long said(const std::string &name, const std::string &line) {
        const auto lines = windows[name].program->outputLines();
        return std::ranges::count(lines, line);
    }

    static bool eventually(const std::function<bool()> &condition) {
        const double end = now() + 8;
        while (!condition() && now() < end) {
            pauseBriefly();
        }
        return condition();
    }

    struct Window {
        Area area;
        std::string colour;
        std::unique_ptr<ChildProcess> program = nullptr;
    };

    PrivateSway sway;
    const Look look{"dim", 1};
    Panes expectation{look, "#3f3f3f"};
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

TEST_F(SwayTest, FocusByClickThroughTheOverlay) {
    show();
    int arrived = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        const std::string name = std::array{"Green", "Blue", "Red"}[i % 3];
        const auto before = said(name, "click");
        // Where no other window covers it, whatever the order.
        const std::map<std::string, Spot> spots = {
            {"Red", {90, 110}}, {"Green", {570, 350}}, {"Blue", {1000, 600}}};
        sway.hands().click(spots.at(name), display);
        arrived += eventually([&] { return said(name, "click") > before; }) ? 1 : 0;
        EXPECT_EQ(wrongWith(threeWithClear(name)), "") << i;
    }
    EXPECT_EQ(arrived, 10);
}

TEST_F(SwayTest, KeyboardMenusDialogsAndFullScreen) {
    show();
    sway.command("bindsym Mod1+Tab [app_id=Green] focus");
    sway.hands().press({EvdevKey::option, EvdevKey::tab});
    ASSERT_TRUE(eventually([&] { return said("Red", "blur") > 0; }));
    EXPECT_EQ(wrongWith(threeWithClear("Green")), "") << "focus by keyboard";

    sway.command("[app_id=Red] focus");
    windows["Red"].program->writeLine("menu 350 200 #f0d0f0 200 90");
    auto panes = threeWithClear("Red");
    panes.push_back({{410, 280, 200, 90}, "#f0d0f0"});
    EXPECT_EQ(wrongWith(panes), "") << "a menu beyond its window's edge";
    windows["Red"].program->writeLine("unmenu");

    windows["Red"].program->writeLine("dialog Sheet #d0f0e0 200 120");
    ASSERT_TRUE(eventually([&] { return sway.ask("get_tree").find("Sheet") != npos; }));
    sway.command("[title=Sheet] floating enable, move absolute position 120 120");
    panes = threeWithClear("Red");
    panes.push_back({{120, 120, 200, 120}, "#d0f0e0"});
    EXPECT_EQ(wrongWith(panes), "") << "a dialog";
    sway.command("[title=Sheet] kill");
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "a dialog that closes";

    sway.command("[app_id=Green] focus");
    windows["Green"].program->writeLine("fill");
    EXPECT_EQ(wrongWith({{display, windows["Green"].colour}}), "") << "full screen";
    windows["Green"].program->writeLine("unfill");
    EXPECT_EQ(wrongWith(threeWithClear("Green")), "") << "after full screen";

    sway.command("[app_id=Green] kill");
    std::erase(order, "Green");
    const std::string left =
        eventually([&] { return said("Red", "focus") > said("Red", "blur"); }) ? "Red" : "Blue";
    EXPECT_EQ(wrongWith(threeWithClear(left)), "") << "closing the focused window";
}

TEST_F(SwayTest, HotKeys) {
    show();
    sway.command("reload"); // drops bindings that were made at run time
    EXPECT_TRUE(eventually([&] {
        sway.hands().press({EvdevKey::command, EvdevKey::option, EvdevKey::tab});
        return wrongNow(threeWithoutEffect(), "HEADLESS-1", 1).empty();
    })) << "Peek";
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "after Peek";
    sway.hands().press({EvdevKey::control, EvdevKey::space});
    EXPECT_EQ(wrongWith(threeWithoutEffect()), "") << "off";
    sway.hands().press({EvdevKey::control, EvdevKey::space});
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "on again";
    sway.hands().press({EvdevKey::control, EvdevKey::option, EvdevKey::command, EvdevKey::d});
    EXPECT_EQ(wrongWith(threeWithoutEffect()), "") << "the emergency stop";
    EXPECT_EQ(said("Red", "down 57"), 0) << "a hot key is not the window's";

    lumo->signal(SIGTERM);
    EXPECT_EQ(lumo->waitForExit(), 0);
    EXPECT_TRUE(eventually([&] {
        sway.hands().press({EvdevKey::control, EvdevKey::space});
        return said("Red", "down 57") > 0;
    })) << "once Lumo has ended";
}

class SwayBindingsTest : public SwayTest {
  protected:
    SwayBindingsTest()
        : SwayTest({.configuration = "for_window [app_id=.] floating enable\n"
                                     "bindsym Ctrl+space [app_id=Blue] focus"}) {}
};

TEST_F(SwayBindingsTest, TheUsersOwnStays) {
    show();
    EXPECT_TRUE(eventually([&] {
        const auto lines = lumo->outputLines();
        return std::ranges::any_of(
            lines, [](const std::string &line) { return line.find("-9878") != npos; });
    })) << lumo->report();
    sway.hands().press({EvdevKey::control, EvdevKey::space});
    EXPECT_EQ(wrongWith(threeWithClear("Blue")), "");
}

TEST_F(SwayTest, WhatEnds) {
    show();
    lumo->signal(SIGKILL);
    EXPECT_EQ(wrongWith(threeWithoutEffect()), "") << "killed";
    lumo = sway.startLumo(look.preferences());
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "");
    const auto second = sway.startLumo(look.preferences());
    EXPECT_EQ(second->waitForExit(), 0);
    EXPECT_THAT(second->outputLines(),
                testing::ElementsAre("[Lumo] already running on this display"));
    EXPECT_TRUE(eventually([&] { return sway.ask("get_tree").find("Lumo Settings") != npos; }));
    sway.command("[title=Lumo] kill");
    sway.bus().stop();
    sway.command("[app_id=Blue] focus");
    EXPECT_EQ(wrongWith(threeWithClear("Blue")), "") << "without a session bus";
    sway.process().kill();
    EXPECT_EQ(lumo->waitForExit(), 1);
    EXPECT_EQ(
        std::ranges::count(lumo->outputLines(), "[Lumo] the connection to the compositor was lost"),
        1);
}

TEST_F(SwayTest, WorkspacesAndTiles) {
    show();
    sway.command("workspace 2");
    EXPECT_EQ(wrongWith({}), "") << "an empty workspace";
    const auto left = sway.startSample("Left", "#a0a040");
    const auto right = sway.startSample("Right", "#40a0a0");
    const Area leftArea = {0, 0, 640, 720};
    const Area rightArea = {640, 0, 640, 720};
    EXPECT_EQ(wrongWith({{leftArea, "#a0a040", false}, {rightArea, "#40a0a0"}}), "") << "tiles";
    sway.command("focus left");
    EXPECT_EQ(wrongWith({{leftArea, "#a0a040"}, {rightArea, "#40a0a0", false}}), "");
    sway.command("bindsym Mod4+g resize grow width 100px");
    sway.hands().press({EvdevKey::command, EvdevKey::g});
    EXPECT_EQ(wrongWith({{{0, 0, 740, 720}, "#a0a040"}, {{740, 0, 540, 720}, "#40a0a0", false}}),
              "")
        << "a tile that grows";
    sway.command("bindsym Mod4+d gaps outer current set 20");
    sway.hands().press({EvdevKey::command, EvdevKey::d});
    const Area leftInGaps = {20, 20, 717, 680};
    const Area rightInGaps = {737, 20, 523, 680};
    EXPECT_EQ(wrongWith({{leftInGaps, "#a0a040"}, {rightInGaps, "#40a0a0", false}}), "")
        << "gaps are no panels";
    sway.command("workspace 1");
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "back again";
    sway.command("[app_id=Red] move scratchpad");
    std::erase(order, "Red");
    sway.command("[app_id=Green] focus");
    EXPECT_EQ(wrongWith(threeWithClear("Green")), "") << "the scratchpad is not shown";
    sway.command("scratchpad show");
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "it is shown";

    windows["Red"].program->writeLine("move");
    ASSERT_TRUE(eventually([&] { return said("Red", "moves at a click") == 1; }));
    sway.hands().moveTo({100, 120}, display);
    sway.hands().setButton(true);
    ASSERT_TRUE(eventually([&] { return said("Red", "moves") == 1; }));
    for (int x = 100; x <= 400; x += 10) {
        sway.hands().moveTo({x, 120}, display);
    }
    sway.hands().setButton(false);
    windows["Red"].area.x += 300;
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "a window that was dragged";
}

TEST_F(SwayTest, WhatTrailsBehindDragAndResize) {
    show();
    auto &red = windows["Red"];
    auto &hands = sway.hands();
    const auto trail = [&] { return expectation.trailIn(sway.picture(), 90, red.colour); };
    dragAndResize(
        {.moveTo = [&](Spot spot) { hands.moveTo(spot, display); },
         .setKey = [&](EvdevKey key, bool isDown) { hands.setKey(key, isDown); },
         .setButton = [&](bool isDown, EvdevButton button) { hands.setButton(isDown, button); },
         .trail = trail,
         .wrong = [&] { return wrongWith(threeWithClear("Red")); },
         // That something moves is seen when sway is asked the next time.
         .afterFirstStep = [&] { EXPECT_TRUE(eventually([&] { return trail() == 0; })); }},
        red.area);
}

class SwayXwaylandTest : public SwayTest {
  protected:
    SwayXwaylandTest()
        : SwayTest({.configuration = "for_window [app_id=.] floating enable\n"
                                     "for_window [class=.] floating enable",
                    .hasXwayland = true}) {}
};

TEST_F(SwayXwaylandTest, WindowsAndMenusOfXApplications) {
    show();
    auto &other = windows["Other"] = {{500, 10, 300, 200}, "#a040a0", sway.startXSample("Other")};
    order = {"Blue", "Green", "Other", "Red"};
    other.program->writeLine("open 0 0 300 200 #a040a0 - - 0 0 0 Other");
    ASSERT_TRUE(eventually([&] { return isShown("Other"); }));
    sway.command("[class=Other] move absolute position 500 10");
    sway.command("[app_id=Red] focus");
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "");
    sway.hands().click({600, 100}, display);
    auto panes = threeWithClear("Other");
    EXPECT_EQ(wrongWith(panes), "") << "focus by click";
    other.program->writeLine("open 700 150 200 120 #f0d0f0 POPUP_MENU - 1 0 0 Menu");
    panes.push_back({{700, 150, 200, 120}, "#f0d0f0"});
    EXPECT_EQ(wrongWith(panes), "") << "a menu beyond its window's edge";
    other.program->writeLine("close 1");
    EXPECT_EQ(wrongWith(threeWithClear("Other")), "") << "it is closed";
    act("quit");
    EXPECT_EQ(lumo->waitForExit(), 0) << lumo->report();
}

class SwayPanelTest : public SwayTest {
  protected:
    SwayPanelTest()
        : SwayTest({.configuration = "for_window [app_id=\"^(Red|Green|Blue)$\"] floating enable\n"
                                     "bar {\nheight 24\nworkspace_buttons no\ntray_output none\n"
                                     "colors {\nbackground #204060\n}\n}"}) {}

    std::vector<Pane> threeAndPanel(const std::string &clear) {
        auto panes = threeWithClear(clear);
        panes.push_back({{0, 696, 1280, 24}, "#204060"});
        return panes;
    }
};

TEST_F(SwayPanelTest, PopoverSettingsCoverAndLocker) {
    show(threeAndPanel("Red"));
    call("/StatusNotifierItem", "org.kde.StatusNotifierItem.ContextMenu", {"1270", "710"});
    auto panes = threeAndPanel("Red");
    panes.push_back({{1014, 390, 260, 300}, ""});
    EXPECT_TRUE(eventually([&] {
        return isShown("Lumo Menu") && sway.picture().at(1020, 450) == Colour::parse("#ffffff");
    })) << "in the corner at the panel";
    EXPECT_EQ(wrongWith(panes), "") << "with the popover";
    EXPECT_TRUE(isShown("Lumo Menu")) << "it stays";
    sway.hands().click({1000, 600}, display);
    EXPECT_TRUE(eventually([&] { return !isShown("Lumo Menu"); })) << "a click elsewhere";
    EXPECT_EQ(wrongWith(threeAndPanel("Blue")), "") << "what was clicked is clear";
    act("settings");
    EXPECT_TRUE(eventually([&] { return isShown("Lumo Settings"); }));
    sway.command("[title=Lumo] kill");
    EXPECT_EQ(wrongWith(threeAndPanel("Blue")), "") << "without the settings";

    act("set-cover", "[<'Green'>]");
    act("off");
    sway.command("workspace 2");
    act("on");
    EXPECT_EQ(wrongWith(threeAndPanel("Green")), "") << "the Cover App is brought forward";
    ManagersTable::shared().keepPicture("sway", sway.picture());
    const auto locker = sway.start({"swaylock", "--no-unlock-indicator", "--color", "102030"});
    EXPECT_EQ(wrongWith({{display, "#102030"}}), "") << "nothing lies above the locker";
    locker->signal(SIGUSR1);
    EXPECT_EQ(wrongWith(threeAndPanel("Green")), "") << "unlocked";
}

TEST_F(SwayTest, FiveHundredWindows) {
    show();
    auto &red = *windows["Red"].program;
    for (int i = 0; i < 496; ++i) {
        red.writeLine("window Small #a06080 320 200");
    }
    red.writeLine("window Last #6080a0 320 220");
    ASSERT_TRUE(eventually([&] { return isShown("Last"); }));
    sway.command("[title=Last] move absolute position 800 20");
    const Pane last = {{800, 20, 320, 220}, "#6080a0"};
    auto panes = threeWithClear("Red");
    panes.back().isClear = false;
    panes.push_back({{480, 260, 320, 200}, "#a06080", false});
    panes.push_back(last);
    EXPECT_EQ(wrongWith(panes), "");
    sway.command("[title=Last] kill");
    panes.pop_back();
    panes.back().isClear = true;
    EXPECT_EQ(wrongWith(panes), "");
}

class SwayDisplaysTest : public SwayTest {
  protected:
    SwayDisplaysTest()
        : SwayTest({.outputs = 2, .configuration = "for_window [app_id=.] floating enable"}) {}
};

TEST_F(SwayDisplaysTest, ScalesAndHotPlug) {
    show();
    EXPECT_EQ(wrongWith({}, "HEADLESS-2"), "") << "a display without a window";
    sway.command("output HEADLESS-2 resolution 1200x720"); // whole points at all of the scales
    const auto other = sway.startSample("Other", "#a040a0", 300, 200);
    sway.command("[app_id=Other] move container to workspace 2, move absolute position 1380 90");
    sway.command("[app_id=Other] focus");
    const Pane clear = {{100, 90, 300, 200}, "#a040a0"};
    EXPECT_EQ(wrongWith({clear}, "HEADLESS-2"), "") << "each display has a clear window";
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "each display has a clear window";

    for (const std::string scale : {"1.5", "2", "1"}) {
        sway.command("output HEADLESS-2 scale " + scale);
        EXPECT_EQ(wrongWith({clear}, "HEADLESS-2", std::stod(scale)), "") << "scale " << scale;
    }
    for (const std::string turn : {"90", "normal"}) {
        sway.command("output HEADLESS-2 transform " + turn);
        EXPECT_EQ(wrongWith({clear}, "HEADLESS-2"), "") << "turned " << turn;
    }
    sway.command("[app_id=Red] focus");
    for (int i = 0; i < 5; ++i) {
        sway.command("output HEADLESS-2 disable");
        sway.command("create_output");
        sway.command("output HEADLESS-2 enable");
        sway.command("output HEADLESS-" + std::to_string(i + 3) + " disable");
    }
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "after a storm";
    EXPECT_EQ(wrongWith({clear}, "HEADLESS-2"), "") << "after a storm";

    lumo.reset();
    auto preferences = look.preferences();
    preferences["multiScreenMode"] = std::string("global");
    lumo = sway.startLumo(preferences);
    EXPECT_EQ(wrongWith({{clear.area, clear.colour, false}}, "HEADLESS-2"), "") << "one for both";
    EXPECT_EQ(wrongWith(threeWithClear("Red")), "") << "one for both";
    sway.command("[app_id=Other] focus");
    EXPECT_EQ(wrongWith({clear}, "HEADLESS-2"), "") << "the other one";
    auto panes = threeWithClear("Red");
    panes.back().isClear = false;
    EXPECT_EQ(wrongWith(panes), "") << "the other one";
}

} // namespace
} // namespace lumo::desktop
