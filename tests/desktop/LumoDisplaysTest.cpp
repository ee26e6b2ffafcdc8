#include "Scene.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::Values;

struct Stage {
    std::string name;
    Compositor compositor;

    friend std::ostream &operator<<(std::ostream &stream, const Stage &stage) {
        return stream << stage.name;
    }
};

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

INSTANTIATE_TEST_SUITE_P(Compositors, LumoDisplays,
                         Values(Stage{"none", Compositor::none},
                                Stage{"picomXrender", Compositor::picomXrender}),
                         [](const auto &stage) { return stage.param.name; });

} // namespace
} // namespace lumo::desktop
