#include "Scene.h"
#include "desktop/LumoProcess.h"
#include "desktop/Outputs.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::Values;

class LumoDisplays : public testing::TestWithParam<Stage> {};

std::string describe(std::vector<Area> areas) {
    std::ranges::sort(areas, {}, &Area::x);
    std::string text;
    for (const Area &area : areas) {
        text += std::to_string(area.width) + "x" + std::to_string(area.height) + "+" +
                std::to_string(area.x) + "+" + std::to_string(area.y) + " ";
    }
    return text;
}

TEST_P(LumoDisplays, HaveOneOverlayEachWhileTheyComeGoAndChange) {
    PrivateDesktop desktop({.width = 1600, .height = 700, .compositor = GetParam().compositor});
    DesktopSession &session = desktop.session();
    SampleApplication left(desktop, "Left", {{.area = {60, 80, 420, 320}, .colour = "#d83c30"}});
    SampleApplication right(desktop, "Right",
                            {{.area = {1040, 80, 420, 320}, .colour = "#3c64e0"}});
    session.activate(left.window());
    const Look look{{"tint", 1}};
    LumoProcess lumo(desktop, look.preferences());
    Scene scene(desktop, lumo, look);
    const auto areas = [&] {
        std::vector<Area> found;
        for (const auto &overlay : lumo.overlays()) {
            found.push_back(overlay.area);
        }
        return describe(found);
    };
    const auto expectOverlays = [&](const std::vector<Area> &expected, Shown rightShown) {
        EXPECT_TRUE(session.eventually([&] { return areas() == describe(expected); }))
            << areas() << "instead of " << describe(expected) << "\n"
            << lumo.process().report();
        // The window manager takes hold of windows that lie on no monitor for a moment.
        session.move(right.window(), 1040, 80);
        EXPECT_EQ(scene.wrongWith(
                      {{"left", left.window(), {100, 300}, {0xd8, 0x3c, 0x30}, Shown::plain},
                       {"right", right.window(), {1400, 300}, {0x3c, 0x64, 0xe0}, rightShown}}),
                  "");
    };

    expectOverlays({{0, 0, 1600, 700}}, Shown::underEffect);
    desktop.setMonitor("LEFT", {0, 0, 800, 700}, true);
    desktop.setMonitor("RIGHT", {800, 0, 800, 700}, false);
    expectOverlays({{0, 0, 800, 700}, {800, 0, 800, 700}}, Shown::plain);
    desktop.setMonitor("LEFT", {0, 0, 900, 700}, true);
    desktop.setMonitor("RIGHT", {900, 0, 700, 500}, false);
    expectOverlays({{0, 0, 900, 700}, {900, 0, 700, 500}}, Shown::plain);
    desktop.removeMonitor("RIGHT");
    desktop.setMonitor("LEFT", {0, 0, 1500, 700}, true);
    expectOverlays({{0, 0, 1500, 700}}, Shown::underEffect);
    desktop.setMonitor("THIRD", {1500, 100, 100, 600}, false);
    expectOverlays({{0, 0, 1500, 700}, {1500, 100, 100, 600}}, Shown::underEffect);
    desktop.removeMonitor("LEFT");
    desktop.removeMonitor("THIRD");
    expectOverlays({{0, 0, 1600, 700}}, Shown::underEffect);
}

// Displays that are plugged in, moved and changed on a server that tells of it in several steps.
class LumoOutputs : public testing::TestWithParam<Stage> {
  protected:
    struct Step {
        std::string name;
        std::vector<OutputUse> uses;
        std::vector<Area> overlays;
    };

    LumoOutputs() {
        session.activate(right.window());
        outputs.arrange({{0, {0, 0, 800, 600}, true}});
    }

    // The areas of all that Lumo has on this desktop, on screen or not.
    std::string overlays() {
        std::vector<Area> found;
        for (const xcb_window_t window : session.stacking()) {
            if (session.classOf(window) == "Lumo") {
                found.push_back(session.isViewable(window) ? session.areaOf(window) : Area{});
            }
        }
        return describe(found);
    }

    // On each display the window that was used last is plain and the other one under the effect.
    std::string wrongWindows(bool hasRight) {
        // The window manager takes hold of windows whose display goes, after it has said this.
        const std::vector<std::uint32_t> size =
            hasRight ? std::vector<std::uint32_t>{1440, 600} : std::vector<std::uint32_t>{800, 600};
        session.eventually(
            [&] { return session.numbers(session.root(), "_NET_DESKTOP_GEOMETRY") == size; });
        // The compositing manager, also without Lumo, now and then draws nothing outside of the
        // root window's former size until it starts anew.
        if (GetParam().compositor != Compositor::none) {
            desktop.stopCompositor();
            desktop.startCompositor(GetParam().compositor);
        }
        session.move(leftBack.window(), 60, 80);
        session.move(left.window(), 160, 150);
        session.move(rightBack.window(), 880, 80);
        session.move(right.window(), 960, 150);
        std::vector<Sight> sights = {
            {"left", left.window(), {300, 300}, {0x3c, 0x64, 0xe0}, Shown::plain},
            {"left back", leftBack.window(), {100, 120}, {0xd8, 0x3c, 0x30}, Shown::underEffect},
            {"right", right.window(), {1100, 300}, {0x30, 0xb0, 0x50}, Shown::plain},
            {"right back", rightBack.window(), {900, 120}, {0xe0, 0xc0, 0x30}, Shown::underEffect}};
        sights.resize(hasRight ? 4 : 2);
        return scene.wrongWith(sights);
    }

    void expectStep(const Step &step) {
        EXPECT_TRUE(session.eventually([&] { return overlays() == describe(step.overlays); }))
            << step.name << ": " << overlays() << "instead of " << describe(step.overlays) << "\n"
            << lumo.process().report();
    }

    PrivateDesktop desktop{{.width = 2080,
                            .height = 640,
                            .compositor = GetParam().compositor,
                            .server = Server::xorg}};
    DesktopSession &session = desktop.session();
    Outputs outputs{desktop.displayName()};
    SampleApplication leftBack{
        desktop, "LeftBack", {{.area = {60, 80, 300, 200}, .colour = "#d83c30"}}};
    SampleApplication left{desktop, "Left", {{.area = {160, 150, 300, 200}, .colour = "#3c64e0"}}};
    SampleApplication rightBack{
        desktop, "RightBack", {{.area = {880, 80, 300, 200}, .colour = "#e0c030"}}};
    SampleApplication right{
        desktop, "Right", {{.area = {960, 150, 300, 200}, .colour = "#30b050"}}};
    const Look look{"tint", 1};
    LumoProcess lumo{desktop, look.preferences()};
    Scene scene{desktop, lumo, look};
};

// The driver can't turn pictures: a turned display is one whose sides have swapped, which is all
// that others see of it.
TEST_P(LumoOutputs, HaveOneOverlayEachWhateverIsPluggedInOrChanged) {
    const OutputUse main{0, {0, 0, 800, 600}, true};
    const OutputUse side{1, {800, 0, 640, 480}};
    const std::vector<Step> steps = {
        {"plugged in", {main, side}, {{0, 0, 800, 600}, {800, 0, 640, 480}}},
        {"another mode", {main, {1, {800, 0, 800, 600}}}, {{0, 0, 800, 600}, {800, 0, 800, 600}}},
        {"turned", {main, {1, {800, 0, 480, 640}}}, {{0, 0, 800, 600}, {800, 0, 480, 640}}},
        {"the other main",
         {{0, {0, 0, 800, 600}}, {1, {800, 0, 480, 640}, true}},
         {{0, 0, 800, 600}, {800, 0, 480, 640}}},
        {"lower", {main, {1, {800, 100, 640, 480}}}, {{0, 0, 800, 600}, {800, 100, 640, 480}}},
        {"overlapping", {main, {1, {760, 0, 640, 600}}}, {{0, 0, 800, 600}, {800, 0, 600, 600}}},
        {"a third",
         {main, side, {2, {1440, 0, 640, 480}}},
         {{0, 0, 800, 600}, {800, 0, 640, 480}, {1440, 0, 640, 480}}},
        {"mirrored", {main, {1, {0, 0, 800, 600}}}, {{0, 0, 800, 600}}},
        {"mirrored in part", {main, {1, {0, 0, 640, 480}}}, {{0, 0, 800, 600}}},
        {"dark", {}, {}},
        {"lit again", {main, side}, {{0, 0, 800, 600}, {800, 0, 640, 480}}},
        {"swapped",
         {{0, {640, 0, 800, 600}, true}, {1, {0, 0, 640, 480}}},
         {{640, 0, 800, 600}, {0, 0, 640, 480}}},
        {"unplugged", {main}, {{0, 0, 800, 600}}},
    };
    expectStep({"alone", {}, {{0, 0, 800, 600}}});
    EXPECT_EQ(wrongWindows(false), "");
    for (const Step &step : steps) {
        outputs.arrange(step.uses);
        expectStep(step);
        if (step.name == "plugged in" || step.name == "lit again") {
            session.activate(left.window());
            session.activate(right.window());
            EXPECT_EQ(wrongWindows(true), "") << step.name;
        }
    }
}

TEST_P(LumoOutputs, ComeRightAfterAStorm) {
    const OutputUse main{0, {0, 0, 800, 600}, true};
    const OutputUse side{1, {800, 0, 640, 480}};
    const std::vector<std::vector<OutputUse>> storm = {
        {main, side}, {main}, {main, {1, {800, 0, 480, 640}}}, {{1, {0, 0, 640, 480}, true}}, {}};
    for (int round = 0; round < 3; ++round) {
        for (std::size_t change = 0; change < 20; ++change) {
            outputs.arrange(storm[change % storm.size()]);
        }
        outputs.arrange(round == 1 ? storm[1] : storm[0]);
        expectStep({"after a storm",
                    {},
                    round == 1 ? std::vector{main.area} : std::vector{main.area, side.area}});
    }
    session.activate(left.window());
    session.activate(right.window());
    EXPECT_EQ(wrongWindows(true), "");
    EXPECT_EQ(lumo.stop(), 0);
    EXPECT_EQ(overlays(), "");
}

INSTANTIATE_TEST_SUITE_P(Compositors, LumoDisplays,
                         Values(Stage{"none", WindowManager::openbox, Compositor::none},
                                Stage{"picomXrender", WindowManager::openbox,
                                      Compositor::picomXrender}),
                         [](const auto &stage) { return stage.param.name; });

INSTANTIATE_TEST_SUITE_P(Compositors, LumoOutputs,
                         Values(Stage{"none", WindowManager::openbox, Compositor::none},
                                Stage{"picomXrender", WindowManager::openbox,
                                      Compositor::picomXrender}),
                         [](const auto &stage) { return stage.param.name; });

} // namespace
} // namespace lumo::desktop
