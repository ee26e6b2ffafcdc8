#include "Look.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <sstream>
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

Picture slopes(const Area &area) {
    Picture picture(area.width, area.height);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            picture.at(x, y) = {static_cast<std::uint8_t>(x * 255 / area.width),
                                static_cast<std::uint8_t>(y * 255 / area.height), 140};
        }
    }
    return picture;
}

// What the screen must show, given what it showed without the effect.
Picture underEffect(const Picture &plain, const Area &clear, const Look &look) {
    Picture expected = look.over(plain);
    expected.paste(plain.part(clear), {clear.x, clear.y});
    return expected;
}

std::string differences(const Picture &shown, const Picture &expected, const Area &clear,
                        int allowedUnderEffect) {
    std::ostringstream text;
    int count = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const int allowed = clear.contains(x, y) ? 0 : allowedUnderEffect;
            if (distance(shown.at(x, y), expected.at(x, y)) > allowed && ++count <= 5) {
                text << "at " << x << "," << y << " " << shown.at(x, y).describe() << " instead of "
                     << expected.at(x, y).describe() << "; ";
            }
        }
    }
    return count == 0 ? std::string() : std::to_string(count) + " pixels: " + text.str();
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
    session.setWallpaper(slopes(session.screenArea()));
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

    const auto isPlain = [&] {
        return !session.picture().firstDifference(plain, session.screenArea());
    };
    std::vector<Look> looks = {{{"dim", 0.6}}, {{"tint", 1}}, {{"softBlur", 0.6, true}}};
    if (GetParam().depth == 24) {
        looks.insert(looks.end(), {{{"dim", 0}}, {{"dim", 1}}, {{"tint", 0.25}}});
    }
    for (const Look &look : looks) {
        const Picture expected = underEffect(plain, clearFrame, look);
        LumoProcess lumo(desktop, look.preferences());
        lumo.waitForOverlays(1);
        std::string wrong;
        const bool isRight = session.eventually([&] {
            wrong = differences(session.picture(), expected, clearFrame, allowedIn(GetParam()));
            return wrong.empty();
        });
        EXPECT_TRUE(isRight) << look.describe() << ": " << wrong << "\n" << lumo.process().report();
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

} // namespace
} // namespace lumo::desktop
