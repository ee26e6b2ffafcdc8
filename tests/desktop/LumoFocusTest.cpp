#include "Scene.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::Contains;
using testing::Not;
using testing::Values;

const Look look{{"dim", 1}};
const Colour wallpaperColour = {0x58, 0x90, 0x70};

Picture plainWallpaper(const Area &area) {
    Picture picture(area.width, area.height);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            picture.at(x, y) = wallpaperColour;
        }
    }
    return picture;
}

// Three applications whose windows overlap in a row, each with a place that none of the others
// covers, seen and used through the effect.
class LumoFocus : public testing::TestWithParam<Stage> {
  protected:
    LumoFocus() {
        session.setWallpaper(plainWallpaper(session.screenArea()));
        red.emplace(desktop, "Red",
                    std::vector<SampleWindow>{
                        {.title = "Red", .area = {60, 80, 420, 320}, .colour = "#d83c30"}});
        green.emplace(desktop, "Green",
                      std::vector<SampleWindow>{
                          {.title = "Green", .area = {360, 240, 420, 320}, .colour = "#3cb450"}});
        blue.emplace(desktop, "Blue",
                     std::vector<SampleWindow>{
                         {.title = "Blue", .area = {640, 420, 420, 320}, .colour = "#3c64e0"}});
        // From the back to the front.
        for (const auto *application : {&*blue, &*green, &*red}) {
            bringForward(*application);
        }
    }

    void bringForward(const SampleApplication &application) {
        session.activate(application.window());
        ASSERT_TRUE(session.eventually([&] { return isInFront(application); }));
    }

    bool isInFront(const SampleApplication &application) {
        return session.activeWindow() == application.window() &&
               std::ranges::all_of(std::vector{red->window(), green->window(), blue->window()},
                                   [&](xcb_window_t other) {
                                       return other == application.window() ||
                                              !session.isViewable(other) ||
                                              session.isAbove(application.window(), other);
                                   });
    }

    void show(const Preferences &preferences = look.preferences(), std::size_t displays = 1) {
        lumo.emplace(desktop, preferences);
        lumo->waitForOverlays(displays);
        scene.emplace(desktop, *lumo, look);
    }

    void startWatchingOrder() {
        session.takeOrderChanges();
        watchedOrder = session.stacking();
    }

    // Each window that the overlay was put below since then, as the lowest of the three above it.
    std::vector<xcb_window_t> drawnClear() {
        const xcb_window_t overlay = lumo->overlays().at(0).window;
        std::vector<xcb_window_t> drawn;
        for (const OrderChange &change : session.takeOrderChanges()) {
            std::erase(watchedOrder, change.window);
            const auto sibling = std::ranges::find(watchedOrder, change.aboveSibling);
            watchedOrder.insert(sibling == watchedOrder.end() ? watchedOrder.begin() : sibling + 1,
                                change.window);
            if (change.window != overlay) {
                continue;
            }
            for (auto above = std::ranges::find(watchedOrder, overlay); above != watchedOrder.end();
                 ++above) {
                if (const auto application = applicationIn(*above)) {
                    drawn.push_back(*application);
                    break;
                }
            }
        }
        return drawn;
    }

    std::optional<xcb_window_t> applicationIn(xcb_window_t frame) {
        for (const xcb_window_t window : {red->window(), green->window(), blue->window()}) {
            if (session.frameOf(window) == frame) {
                return window;
            }
        }
        return std::nullopt;
    }

    Sight seeRed(Shown shown) const { return {"red", red->window(), redSpot, redColour, shown}; }
    Sight seeGreen(Shown shown) const {
        return {"green", green->window(), greenSpot, greenColour, shown};
    }
    Sight seeBlue(Shown shown) const {
        return {"blue", blue->window(), blueSpot, blueColour, shown};
    }
    static Sight seeWallpaper(Spot spot = {1200, 120}) {
        return {"the wallpaper", XCB_NONE, spot, wallpaperColour, Shown::underEffect};
    }

    // The three windows and the wallpaper with one of the windows clear.
    std::vector<Sight> clear(const std::optional<SampleApplication> &application) const {
        const auto shown = [&](const std::optional<SampleApplication> &other) {
            return &other == &application ? Shown::plain : Shown::underEffect;
        };
        return {seeRed(shown(red)), seeGreen(shown(green)), seeBlue(shown(blue)), seeWallpaper()};
    }

    static constexpr Spot redSpot = {150, 170};
    static constexpr Spot greenSpot = {560, 340};
    static constexpr Spot blueSpot = {900, 650};
    static constexpr Colour redColour = {0xd8, 0x3c, 0x30};
    static constexpr Colour greenColour = {0x3c, 0xb4, 0x50};
    static constexpr Colour blueColour = {0x3c, 0x64, 0xe0};

    PrivateDesktop desktop{
        {.windowManager = GetParam().windowManager, .compositor = GetParam().compositor}};
    DesktopSession &session = desktop.session();
    std::optional<SampleApplication> red;
    std::optional<SampleApplication> green;
    std::optional<SampleApplication> blue;
    std::optional<LumoProcess> lumo;
    std::optional<Scene> scene;
    std::vector<xcb_window_t> watchedOrder;
};

TEST_P(LumoFocus, MovesTheOverlayAndClicksReachTheWindowsBeneath) {
    show();
    EXPECT_EQ(scene->wrongWith(clear(red)), "");
    bringForward(*green);
    EXPECT_EQ(scene->wrongWith(clear(green)), "");
    bringForward(*blue);
    EXPECT_EQ(scene->wrongWith(clear(blue)), "");

    struct Step {
        std::optional<SampleApplication> &application;
        Spot spot;
    };
    std::vector<Step> steps = {{red, redSpot},      {green, greenSpot}, {blue, blueSpot},
                               {green, {500, 300}}, {red, {90, 380}},   {blue, {1040, 730}},
                               {red, {300, 130}},   {blue, {800, 500}}, {green, {600, 300}},
                               {red, {200, 250}}};
    for (const Step &step : steps) {
        const auto before = step.application->clicks();
        session.click(step.spot);
        auto expected = before;
        expected.push_back({0, step.spot, 1});
        EXPECT_TRUE(session.eventually([&] { return step.application->clicks() == expected; }))
            << "the click at " << step.spot.x << "," << step.spot.y << " got lost";
        EXPECT_EQ(scene->wrongWith(clear(step.application)), "");
    }

    // Faster than the overlay follows.
    const std::size_t before = green->clicks().size() + blue->clicks().size();
    for (int round = 0; round < 5; ++round) {
        session.click(greenSpot);
        session.click(blueSpot);
    }
    EXPECT_TRUE(session.eventually(
        [&] { return green->clicks().size() + blue->clicks().size() == before + 10; }));
    bringForward(*blue); // under load not every manager ends with the window of the last click
    EXPECT_EQ(scene->wrongWith(clear(blue)), "");
}

// From red to green and back before the overlay follows: green must never be drawn clear with red
// under the effect, which is what an overlay directly below green's frame and above red's means.
TEST_P(LumoFocus, NeverDrawsAWindowThatHadTheFocusForAMoment) {
    using Clock = std::chrono::steady_clock;
    show();
    ASSERT_EQ(scene->wrongWith(clear(red)), "");
    bool wasBriefEnough = false;
    for (int attempt = 0; attempt < 30 && !wasBriefEnough; ++attempt) {
        startWatchingOrder();
        const auto start = Clock::now();
        bringForward(*green);
        session.remains([] { return true; }, Seconds(0.025)); // long enough for a tick to see it
        bringForward(*red);
        wasBriefEnough = Seconds(Clock::now() - start).count() < 0.07;
        ASSERT_EQ(scene->wrongWith(clear(red)), "");
        // Whatever still waits to be drawn is drawn before this.
        bringForward(*blue);
        ASSERT_EQ(scene->wrongWith(clear(blue)), "");
        if (wasBriefEnough) {
            EXPECT_THAT(drawnClear(), Not(Contains(green->window())));
        }
        bringForward(*red);
        ASSERT_EQ(scene->wrongWith(clear(red)), "");
    }
    EXPECT_TRUE(wasBriefEnough) << "this machine is too slow to try it";

    startWatchingOrder();
    bringForward(*green);
    ASSERT_EQ(scene->wrongWith(clear(green)), "");
    EXPECT_THAT(drawnClear(), Contains(green->window())) << "a longer focus must be noticed";
}

TEST_P(LumoFocus, FollowsWhatBecomesOfTheClearWindow) {
    show();
    ASSERT_EQ(scene->wrongWith(clear(red)), "");

    session.move(red->window(), 700, 60);
    const Spot movedSpot = {950, 200};
    Sight moved = seeRed(Shown::plain);
    moved.spot = movedSpot;
    EXPECT_EQ(scene->wrongWith({moved, seeGreen(Shown::underEffect), seeWallpaper(redSpot)}), "");

    session.resize(red->window(), 300, 320);
    EXPECT_EQ(scene->wrongWith({moved, seeWallpaper({1100, 200})}), "");

    session.setFullScreen(red->window(), true);
    Sight everywhere = moved;
    everywhere.spot = {40, 700};
    Sight corner = moved;
    corner.spot = {1279, 0};
    EXPECT_EQ(scene->wrongWith({moved, everywhere, corner}), "");
    session.setFullScreen(red->window(), false);
    EXPECT_EQ(scene->wrongWith({moved, seeGreen(Shown::underEffect), seeWallpaper(redSpot)}), "");

    session.minimise(red->window());
    EXPECT_TRUE(session.eventually([&] { return !session.isViewable(red->window()); }));
    const std::vector<Sight> greenClear = {seeGreen(Shown::plain), seeBlue(Shown::underEffect),
                                           seeWallpaper(movedSpot)};
    EXPECT_EQ(scene->wrongWith(greenClear), "");
    session.restore(red->window());
    EXPECT_EQ(scene->wrongWith({moved, seeGreen(Shown::underEffect), seeBlue(Shown::underEffect)}),
              "");

    session.close(red->window());
    EXPECT_EQ(scene->wrongWith(greenClear), "");
    green->kill();
    EXPECT_EQ(scene->wrongWith({seeBlue(Shown::plain), seeWallpaper(greenSpot)}), "");
    session.close(blue->window());
    EXPECT_EQ(scene->wrongWith({seeWallpaper(blueSpot), seeWallpaper(greenSpot)}), "");
}

TEST_P(LumoFocus, LeavesDocksMenusAndWindowsKeptAboveAlone) {
    SampleApplication dock(desktop, "Dock",
                           {{.area = {0, 770, 1280, 30}, .colour = "#e0e0a0", .type = "DOCK"}});
    show();
    const Sight seeDock = {"the dock", dock.window(), {1200, 785}, {0xe0, 0xe0, 0xa0}};
    const auto with = [&](const std::optional<SampleApplication> &application,
                          const std::vector<Sight> &others) {
        std::vector<Sight> sights = clear(application);
        sights.insert(sights.end(), others.begin(), others.end());
        return sights;
    };
    EXPECT_EQ(scene->wrongWith(with(red, {seeDock})), "");

    SampleApplication menu(desktop, "Menu",
                           {{.area = {840, 560, 120, 60},
                             .colour = "#f0d0f0",
                             .type = "POPUP_MENU",
                             .overrideRedirect = true}});
    const Sight seeMenu = {"the menu", menu.window(), {850, 600}, {0xf0, 0xd0, 0xf0}};
    EXPECT_EQ(scene->wrongWith(with(red, {seeDock, seeMenu})), "");
    bringForward(*green);
    EXPECT_EQ(scene->wrongWith(with(green, {seeDock, seeMenu})), "");
    menu.closeWindow(0);

    session.setKeptAbove(blue->window(), true);
    const Sight seeBlueAbove = seeBlue(Shown::plain);
    const std::vector<Sight> greenAndBlue = {seeBlueAbove, seeGreen(Shown::plain),
                                             seeRed(Shown::underEffect), seeWallpaper(), seeDock};
    EXPECT_EQ(scene->wrongWith(greenAndBlue), "");
    session.activate(red->window());
    EXPECT_EQ(scene->wrongWith({seeBlueAbove, seeRed(Shown::plain), seeGreen(Shown::underEffect),
                                seeWallpaper(), seeDock}),
              "");
    session.setKeptAbove(blue->window(), false);
    bringForward(*red);
    EXPECT_EQ(scene->wrongWith(with(red, {seeDock})), "");
}

TEST_P(LumoFocus, KeepsOneWindowClearPerDisplayOrOneInAll) {
    desktop.setMonitor("LEFT", {0, 0, 660, 800}, true);
    desktop.setMonitor("RIGHT", {660, 0, 620, 800}, false);
    // Red lies on the left, blue on the right, green behind both on either.
    ASSERT_TRUE(
        session.eventually([&] { return session.isAbove(red->window(), green->window()); }));
    bringForward(*blue);
    bringForward(*red);
    constexpr Spot greenOnTheRight = {700, 340};
    Sight seeGreenRight = {"green's right half", green->window(), greenOnTheRight, greenColour,
                           Shown::underEffect};

    show(look.preferences(), 2);
    EXPECT_EQ(
        scene->wrongWith({seeRed(Shown::plain), seeBlue(Shown::plain), seeGreen(Shown::underEffect),
                          seeGreenRight, seeWallpaper(), seeWallpaper({200, 600})}),
        "");
    // Red goes behind green: green is the clear window of the left, and behind blue on the right.
    bringForward(*green);
    bringForward(*blue);
    EXPECT_EQ(scene->wrongWith(
                  {seeRed(Shown::underEffect), seeBlue(Shown::plain), seeGreen(Shown::plain)}),
              "");
    EXPECT_EQ(lumo->stop(), 0);

    Preferences preferences = look.preferences();
    preferences["multiScreenMode"] = std::string("global");
    show(preferences, 2);
    EXPECT_EQ(scene->wrongWith(clear(blue)), "");
    bringForward(*red);
    EXPECT_EQ(scene->wrongWith(clear(red)), "");
    bringForward(*green);
    seeGreenRight.shown = Shown::plain;
    auto greenClear = clear(green);
    greenClear.push_back(seeGreenRight);
    EXPECT_EQ(scene->wrongWith(greenClear), "");
}

INSTANTIATE_TEST_SUITE_P(
    Managers, LumoFocus,
    Values(Stage{"openbox", WindowManager::openbox},
           Stage{"openboxPicom", WindowManager::openbox, Compositor::picomXrender},
           Stage{"fluxbox", WindowManager::fluxbox}, Stage{"xfwm4", WindowManager::xfwm4},
           Stage{"xfwm4Compositing", WindowManager::xfwm4Compositing}),
    [](const auto &manager) { return manager.param.name; });

} // namespace
} // namespace lumo::desktop
