#include "Look.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::Values;

struct Stage {
    std::string name;
    Compositor compositor = Compositor::none;
    int depth = 24;

    friend std::ostream &operator<<(std::ostream &stream, const Stage &stage) {
        return stream << stage.name;
    }
};

// Depth 16 has steps of eight, and servers cut off what lies between.
int allowedIn(const Stage &stage) {
    return stage.depth == 16 ? 10 : tolerance;
}

// What the screen must show, given what it showed without the effect.
Picture underEffect(const Picture &plain, const Area &clear, const Look &look) {
    Picture expected = look.over(plain);
    expected.paste(plain.part(clear), {clear.x, clear.y});
    return expected;
}

class LumoPictures : public testing::TestWithParam<Stage> {};

// Every pixel of the screen: the clear window's frame and contents bit for bit as before, the other
// windows, their frames and the wallpaper as the layers say, grain by grain.
TEST_P(LumoPictures, EveryPixelIsWhatTheLayersSay) {
    PrivateDesktop desktop({.width = 1000,
                            .height = 700,
                            .compositor = GetParam().compositor,
                            .depth = GetParam().depth});
    DesktopSession &session = desktop.session();
    const Area screen = session.screenArea();
    session.setWallpaper({screen.width, screen.height, [&](int x, int y) {
                              return Colour{static_cast<std::uint8_t>(x * 255 / screen.width),
                                            static_cast<std::uint8_t>(y * 255 / screen.height),
                                            140};
                          }});
    SampleApplication red(desktop, "Red", {{.area = {40, 60, 420, 320}, .colour = "#e03c28"}});
    SampleApplication white(desktop, "White", {{.area = {540, 80, 400, 300}, .colour = "#ffffff"}});
    SampleApplication clear(desktop, "Clear",
                            {{.area = {300, 250, 420, 320}, .colour = "#2a78c8"}});
    session.activate(clear.window());
    ASSERT_TRUE(session.eventually([&] { return session.activeWindow() == clear.window(); }));
    // A compositing manager may be late, and the picture still until then.
    const auto shows = [&](Spot spot, const char *colour) {
        return distance(session.pixel(spot), Colour::parse(colour)) <= allowedIn(GetParam());
    };
    ASSERT_TRUE(session.eventually([&] {
        return shows({100, 200}, "#e03c28") && shows({800, 200}, "#ffffff") &&
               shows({500, 450}, "#2a78c8");
    }));
    const Picture plain = session.stillPicture();
    const Area clearFrame = session.frameAreaOf(clear.window());
    ASSERT_GT(clearFrame.height, 320) << "the window has a frame, which must stay clear with it";

    const auto isPlain = [&] { return session.picture().differenceFrom(plain, screen).empty(); };
    std::vector<Look> looks = {{{"dim", 0.6}}, {{"tint", 1}}, {{"softBlur", 0.6, true}}};
    if (GetParam().depth == 24) {
        looks.insert(looks.end(), {{{"dim", 0}}, {{"dim", 1}}, {{"tint", 0.25}}});
    }
    for (const Look &look : looks) {
        const Picture expected = underEffect(plain, clearFrame, look);
        LumoProcess lumo(desktop, look.preferences());
        lumo.waitForOverlays(1);
        EXPECT_EQ(session.wrongUntilNone([&] {
            const Picture shown = session.picture();
            return shown.differenceFrom(expected, clearFrame) +
                   shown.differenceFrom(expected, screen, allowedIn(GetParam()));
        }),
                  "")
            << look.describe() << "\n"
            << lumo.process().report();
        EXPECT_TRUE(session.eventually([&] {
            session.press({Key::option, Key::command, Key::tab});
            return session.eventually([&] { return isPlain(); }, Seconds(0.5));
        })) << "Peek, "
            << look.describe();
        EXPECT_EQ(lumo.stop(), 0);
        EXPECT_TRUE(session.eventually(isPlain)) << "after " << look.describe();
    }
}

INSTANTIATE_TEST_SUITE_P(Compositors, LumoPictures,
                         Values(Stage{"none"}, Stage{"picomXrender", Compositor::picomXrender},
                                Stage{"picomGlx", Compositor::picomGlx},
                                Stage{"noneDepth16", Compositor::none, 16},
                                Stage{"picomXrenderDepth16", Compositor::picomXrender, 16},
                                Stage{"noneDepth30", Compositor::none, 30},
                                Stage{"picomXrenderDepth30", Compositor::picomXrender, 30}),
                         [](const auto &stage) { return stage.param.name; });

// Which is grey here, whatever the root window's background and the settings of other desktops.
TEST(LumoDesktopColour, IsWhatTheCompositingManagerShows) {
    PrivateDesktop desktop({.width = 400, .height = 300, .compositor = Compositor::picomXrender});
    DesktopSession &session = desktop.session();
    ASSERT_EQ(desktop.start({"xsetroot", "-solid", "#306090"})->waitForExit(Seconds(10)), 0);
    const Colour plain = Colour::parse("#808080");
    ASSERT_TRUE(session.eventually([&] { return session.pixel(200, 150) == plain; }));
    LumoProcess lumo(desktop, Look{{"softBlur", 0.6}}.preferences());
    lumo.waitForOverlays(1);
    EXPECT_TRUE(session.eventually([&] { return session.pixel(200, 150) != plain; }));
    EXPECT_TRUE(session.remains(
        [&] {
            const Colour seen = session.pixel(200, 150);
            return seen.red == seen.green && seen.green == seen.blue && distance(seen, plain) < 40;
        },
        Seconds(0.5)))
        << session.pixel(200, 150).describe();
}

} // namespace
} // namespace lumo::desktop
