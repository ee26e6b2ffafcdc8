#include "ThreeWindows.h"

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <deque>
#include <ostream>
#include <random>
#include <string>

namespace lumo::desktop {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Place {
    std::string name;
    WindowManager manager = WindowManager::none;
    std::string placement;
    WindowManager successor = WindowManager::none;
    std::string nextPlacement;

    friend std::ostream &operator<<(std::ostream &stream, const Place &place) {
        return stream << place.name;
    }
};

// What can happen to windows, managers and compositing managers while an overlay shows. Whatever
// it is, no look at the wallpaper may find it black, and in the end the picture must be right.
class Races : public testing::TestWithParam<Place>, protected ThreeWindows {
  protected:
    Races()
        : ThreeWindows({.windowManager = GetParam().manager}) {
        session.setWallpaper(
            {session.screenArea().width, session.screenArea().height, [](int, int) {
                 return Colour{0xc0, 0xc0, 0xc0};
             }});
        show();
    }

    // Windows of a client that makes them, has them activated and destroys them without waiting for
    // anything. Returns when the manager has had its turn with all of them.
    void storm(int count) {
        auto *connection = session.connection();
        std::mt19937 random(static_cast<unsigned>(count));
        const auto number = [&](unsigned from, unsigned to) {
            return static_cast<std::uint32_t>(from + random() % (to - from));
        };
        std::deque<xcb_window_t> alive;
        for (int i = 0; i < count; ++i) {
            const xcb_window_t window = xcb_generate_id(connection);
            const std::array<std::uint32_t, 2> values = {number(0x808080, 0xffffff),
                                                         random() % 8 == 0 ? 1U : 0U};
            xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, session.root(),
                              static_cast<std::int16_t>(number(0, 900)),
                              static_cast<std::int16_t>(number(0, 500)),
                              static_cast<std::uint16_t>(number(50, 500)),
                              static_cast<std::uint16_t>(number(50, 400)), 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                              XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
            xcb_map_window(connection, window);
            session.activate(window);
            alive.push_back(window);
            if (alive.size() > random() % 12) {
                xcb_destroy_window(connection, alive.front());
                alive.pop_front();
            }
        }
        for (const xcb_window_t window : alive) {
            xcb_destroy_window(connection, window);
        }
        session.stacking(); // a round trip
        if (session.windowManagerName()) {
            EXPECT_TRUE(session.eventually([&] { return session.windowManagerTakesWindows(); }));
        }
    }

    bool isWallpaperBlack() { return distance(session.pixel(1200, 60), {}) <= 8; }

    // How long after the call the picture is right, in frames of a sixtieth of a second.
    double framesUntilRight() {
        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        EXPECT_EQ(wrongWithFrontmostClear(), "");
        return Seconds(Clock::now() - start).count() * 60;
    }

    void expectAlive() {
        EXPECT_TRUE(lumo->process().isRunning()) << lumo->process().report();
        EXPECT_FALSE(isWallpaperBlack());
    }

    void expectPlacement(const std::string &placement) {
        EXPECT_TRUE(session.eventually([&] {
            EXPECT_FALSE(isWallpaperBlack());
            return placementSeen() == placement;
        })) << placementSeen()
            << " instead of " << placement << "\n"
            << lumo->process().report();
    }
};

TEST_P(Races, ThousandWindowsComeAndGo) {
    storm(1000);
    expectAlive();
    bringForward(green);
    RecordProperty("frames after the storm", std::to_string(framesUntilRight()));
    EXPECT_EQ(wrongWithOnly(green), "");
    EXPECT_EQ(placementSeen(), GetParam().placement)
        << "windows that come and go are no restacking contest";
    EXPECT_EQ(lumo->stop(), 0) << lumo->process().report();
}

TEST_P(Races, WindowManagersComeAndGo) {
    if (GetParam().manager != WindowManager::none) {
        desktop.killWindowManager();
        expectAlive();
        expectPlacement("cut-outs");
        RecordProperty("frames after the manager's death", std::to_string(framesUntilRight()));
        storm(100);
        desktop.startWindowManager(GetParam().manager);
        expectAlive();
        expectPlacement(GetParam().placement);
        bringForward(green);
        EXPECT_EQ(wrongWithOnly(green), "");
    }
    desktop.startWindowManager(GetParam().successor);
    expectAlive();
    expectPlacement(GetParam().nextPlacement);
    RecordProperty("frames after the succession", std::to_string(framesUntilRight()));
    for (const auto *application : {&blue, &red, &green}) {
        bringForward(*application);
    }
    EXPECT_EQ(wrongWithOnly(green), "");
    EXPECT_THAT(lumo->process().report(), Not(HasSubstr("keeps taking")));
    EXPECT_EQ(lumo->stop(), 0) << lumo->process().report();
}

TEST_P(Races, CompositingManagersComeAndGo) {
    for (int round = 0; round < 2; ++round) {
        desktop.startCompositor(Compositor::picomXrender);
        expectAlive();
        EXPECT_EQ(wrongWithFrontmostClear(), "");
        storm(50);
        EXPECT_EQ(wrongWithFrontmostClear(), "");
        EXPECT_TRUE(
            session.eventually([&] { return !session.isShaped(lumo->overlays().at(0).window); }));
        desktop.stopCompositor();
        expectAlive();
        RecordProperty("frames after the compositing manager's death " + std::to_string(round),
                       std::to_string(framesUntilRight()));
    }
    EXPECT_EQ(placementSeen(), GetParam().placement);
    EXPECT_EQ(lumo->stop(), 0) << lumo->process().report();
}

// Red, green and blue lie from the bottom to the top, each over a part of the one before; the
// pointer goes from one to the other.
TEST(FocusThatDoesNotRaise, CutOutsReplaceTheOrderBelow) {
    ThreeWindows windows({.windowManager = WindowManager::openboxSloppy});
    auto &session = windows.session;
    windows.lumo.emplace(windows.desktop, shownEffect("dim", 1));
    windows.lumo->waitForOverlays(1);
    const auto goTo = [&](const SubjectApplication &application, Spot spot) {
        session.movePointerTo(spot.x, spot.y);
        EXPECT_TRUE(session.eventually(
            [&] { return session.activeWindow() == application.subject.window; }));
    };
    const Spot inRed = {100, 150};
    const Spot inGreen = {400, 500};
    const Spot inBlue = {900, 650};
    goTo(windows.blue, inBlue);
    EXPECT_EQ(
        windows.wrongWith({windows.blue.subject}, {windows.red.subject, windows.green.subject}),
        "");
    goTo(windows.red, inRed);
    // Green hides a part of red, and blue nothing.
    EXPECT_EQ(
        windows.wrongWith({windows.red.subject, windows.green.subject}, {windows.blue.subject}),
        "");
    goTo(windows.green, inGreen);
    EXPECT_EQ(
        windows.wrongWith({windows.green.subject, windows.blue.subject}, {windows.red.subject}),
        "");
}

TEST(FocusThatDoesNotRaise, IsThatOfALoweredWindowAsWell) {
    for (const auto manager : {WindowManager::openbox, WindowManager::metacity}) {
        ThreeWindows windows({.windowManager = manager});
        windows.show();
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(windows.session.connection(), windows.red.subject.window,
                             XCB_CONFIG_WINDOW_STACK_MODE, &below);
        // Green hides a part of red, and blue nothing.
        EXPECT_EQ(
            windows.wrongWith({windows.red.subject, windows.green.subject}, {windows.blue.subject}),
            "");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Placements, Races,
    testing::Values(
        Place{"openbox", WindowManager::openbox, "below", WindowManager::kwin, "managed"},
        Place{"kwin", WindowManager::kwin, "managed", WindowManager::i3Floating, "cut-outs"},
        Place{"i3", WindowManager::i3Floating, "cut-outs", WindowManager::openbox, "below"},
        Place{"none", WindowManager::none, "cut-outs", WindowManager::kwin, "managed"}),
    [](const auto &place) { return place.param.name; });

} // namespace
} // namespace lumo::desktop
