#include "Look.h"
#include "desktop/ProgramUnderTest.h"
#include "desktop/SampleApplication.h"
#include "desktop/ShellDesktop.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class LumoShell : public testing::Test, protected ShellDesktop {};

TEST_F(LumoShell, GuidanceFirstThenTheStatusItem) {
    lumo = std::make_unique<LumoProcess>(desktop);
    auto guidance = appears("Lumo");
    ASSERT_TRUE(guidance) << lumo->process().report();
    EXPECT_EQ(session.areaOf(*guidance).width, 400);
    EXPECT_EQ(session.areaOf(*guidance).height, 480);
    EXPECT_THAT(session.numbers(*guidance, "_MOTIF_WM_HINTS"), ElementsAre(3, 0x26, 0x1e, 0, 0))
        << "neither minimised nor maximised";
    session.close(*guidance);
    EXPECT_TRUE(isStored("hasCompletedOnboarding", "<true/>"));
    ASSERT_TRUE(disappears("Lumo"));

    session.click(dot(), 1);
    EXPECT_TRUE(session.remains([&] { return !isPopoverShown(); }, Seconds(0.3)));
    ASSERT_TRUE(openPopover());
    const auto area = *popover();
    const auto screen = session.screenArea();
    EXPECT_TRUE(area.x >= 0 && area.y >= 0 && area.x + area.width <= screen.width &&
                area.y + area.height <= screen.height);
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());

    ASSERT_TRUE(openPopover());
    chooseRow(0); // Turn Lumo On
    EXPECT_TRUE(popoverCloses());
    EXPECT_THAT(lumo->waitForOverlays(), SizeIs(1));
    EXPECT_TRUE(isStored("isEnabled", "<true/>"));

    ASSERT_TRUE(openPopover());
    session.press({Key::up}); // the last row: Quit Lumo
    EXPECT_TRUE(session.remains([&] { return isPopoverShown(); }, Seconds(0.4)));
    session.press({Key::control, Key::space});
    EXPECT_TRUE(isStored("isEnabled", "<false/>")) << "shortcuts are no keys of the row's";
    EXPECT_TRUE(isPopoverShown());
    session.press({Key::enter});
    EXPECT_EQ(lumo->process().waitForExit(), 0) << lumo->process().report();
    EXPECT_THAT(windowsTitled("Lumo - Focus and privacy"), IsEmpty());
}

TEST_F(LumoShell, ClicksElsewhereCloseThePopoverAndArrive) {
    SampleApplication one(desktop, "One", {{.area = {60, 80, 300, 200}}});
    SampleApplication two(desktop, "Two", {{.area = {60, 400, 300, 200}}});
    start();
    const auto at = dot();
    const auto clickOn = [&](SampleApplication &application, int button) {
        const auto area = session.areaOf(application.window());
        const auto before = application.clicks().size();
        session.click({area.x + 50, area.y + 50}, button);
        return session.eventually([&] { return application.clicks().size() == before + 1; });
    };
    struct Case {
        const char *name;
        std::function<bool()> act; // false when it had not the effect it has without a popover
    };
    for (const auto &[name, act] : std::vector<Case>{
             {"a second click", [&] { return session.click(at, 3), true; }},
             {"a click on a window",
              [&] {
                  return clickOn(one, 1) &&
                         session.eventually([&] { return session.activeWindow() == one.window(); });
              }},
             {"a right click on another", [&] { return clickOn(two, 3); }},
             {"the right button dragged off the dot",
              [&] {
                  session.movePointerTo(at.x, at.y);
                  session.setButton(3, true);
                  const bool stays =
                      session.remains([&] { return isPopoverShown(); }, Seconds(0.1));
                  session.movePointerTo(700, 60);
                  session.setButton(3, false);
                  return stays;
              }},
         }) {
        ASSERT_TRUE(openPopover()) << name;
        EXPECT_TRUE(act()) << name;
        EXPECT_TRUE(popoverCloses()) << name;
        EXPECT_TRUE(session.eventually([&] { return !session.isKeyboardGrabbed(); })) << name;
    }
}

TEST_F(LumoShell, EmergencyKeysStopOncePerPressWhereverTheyArrive) {
    start({{"effectMode", "dim"}});
    // Without a notification service each stop leaves one line.
    const auto stops = [&] {
        const auto lines = lumo->process().outputLines();
        return std::ranges::count_if(lines, [](const std::string &line) {
            return line.starts_with("[Lumo] Failed to send notification: ");
        });
    };
    long expected = 0;
    const auto holdEmergencyKeys = [&](const std::string &where) {
        SCOPED_TRACE(where);
        const std::vector<Key> keys = {Key::control, Key::option, Key::command, Key::d};
        std::ranges::for_each(keys, [&](Key key) { session.setKey(key, true); });
        ++expected;
        EXPECT_TRUE(session.eventually([&] { return stops() >= expected; }));
        EXPECT_TRUE(session.remains([&] { return stops() == expected; }, Seconds(1.2)))
            << stops() << " stops; repeats begin within the second";
        std::ranges::for_each(keys, [&](Key key) { session.setKey(key, false); });
    };
    holdEmergencyKeys("another program");
    ASSERT_TRUE(openPopover());
    holdEmergencyKeys("popover");
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());
    const auto settings = openSettings();
    ASSERT_TRUE(settings);
    holdEmergencyKeys("settings");
    ASSERT_TRUE(session.eventually([&] {
        const auto area = session.areaOf(*settings);
        session.click({area.x + 80, area.y + 37 + 34 * 2}); // the page of the Cover App
        session.stillPicture();
        for (const Key key : {Key::tab, Key::tab, Key::space}) {
            session.press({key});
        }
        const bool isOpen =
            session.eventually([&] { return session.isKeyboardGrabbed(); }, Seconds(2));
        if (!isOpen) {
            session.press({Key::escape});
        }
        return isOpen;
    }));
    holdEmergencyKeys("picker");
}

// One control of each kind, by the keyboard; which setting each of them writes is tested off
// screen.
TEST_F(LumoShell, SettingsAreInForceAtOnce) {
    const Colour green{0x3c, 0xb4, 0x50};
    const Spot spot{1160, 250};
    SampleApplication covered(desktop, "green",
                              {{.area = {1060, 40, 200, 300}, .colour = "#3cb450"}});
    SampleApplication front(desktop, "red", {{.area = {10, 40, 200, 300}}});
    start(shownEffect("dim", 0.5));
    const auto settings = openSettings();
    ASSERT_TRUE(settings) << lumo->process().report();
    const auto shows = [&](Colour colour) {
        return session.eventually(
            [&] { return distance(session.pixel(spot), colour) <= tolerance; });
    };
    const auto openPage = [&](int index) {
        const auto area = session.areaOf(*settings);
        session.click({area.x + 80, area.y + 37 + 34 * index});
        session.stillPicture();
    };
    const auto press = [&](const std::vector<std::vector<Key>> &chords) {
        std::ranges::for_each(chords, [&](const auto &chord) { session.press(chord); });
    };
    const auto lookOf = [&](const Look &look) {
        return look.over(green, grainAt(session.screenArea().width, spot));
    };
    EXPECT_TRUE(shows(lookOf({{"dim", 0.5}})));

    openPage(0);
    press({{Key::tab}, {Key::space}});
    EXPECT_TRUE(isStored("launchAtLogin", "<true/>"));
    EXPECT_TRUE(session.eventually(
        [&] { return exists(desktop.configDirectory() / "autostart" / "app.lumo.Lumo.desktop"); }));

    openPage(1);
    press({{Key::tab}, {Key::right}, {Key::right}});
    EXPECT_TRUE(shows(lookOf({{"tint", 0.5}})));
    press({{Key::tab}, {Key::tab}, {Key::right}});
    EXPECT_TRUE(shows(lookOf({{"tint", 0.55}}))) << stored("effectIntensity");

    openPage(2);
    press({{Key::tab}, {Key::space}});
    EXPECT_TRUE(isStored("privacyCoverEnabled", "<true/>"));
    press({{Key::tab}, {Key::down}});
    EXPECT_TRUE(isStored("privacyCoverBundleID", "<string>green</string>"));
    EXPECT_TRUE(shows(green));
    press({{Key::shift, Key::tab}, {Key::space}});
    EXPECT_TRUE(shows(lookOf({{"tint", 0.55}}))) << stored("privacyCoverEnabled");

    openPage(3);
    press({{Key::tab}, {Key::space}});
    session.stillPicture(); // the button has to answer before the next keys
    press({{Key::control, Key::j}});
    EXPECT_TRUE(isStored("toggleShortcutKey", "<integer>38</integer>"));
    press({{Key::control, Key::j}});
    EXPECT_TRUE(shows(green));
    EXPECT_EQ(lumo->stop(), 0);
}

TEST_F(LumoShell, SecondStartOpensTheSettings) {
    // A session manager that never replies: a client that reports to it waits for ever.
    const auto place = (desktop.configDirectory() / "session").string();
    const int manager = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    place.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(manager, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(listen(manager, 1), 0);
    lumo = std::make_unique<LumoProcess>(desktop, Preferences{{"hasCompletedOnboarding", true}},
                                         Environment{{"SESSION_MANAGER", "unix/:" + place}});
    dot();
    for (int round = 0; round < 2; ++round) {
        for (int start = 0; start < 2; ++start) {
            LumoProcess second(desktop);
            EXPECT_EQ(second.process().waitForExit(), 0);
        }
        const auto settings = appears("Lumo Settings");
        ASSERT_TRUE(settings) << lumo->process().report();
        EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == *settings; }));
        // Its background, below the entries of the sidebar, is a handle for who drags it.
        const auto area = session.areaOf(*settings);
        const Spot below{area.x + 60, area.y + 400};
        session.movePointerTo(below.x, below.y);
        session.setButton(1, true);
        EXPECT_TRUE(session.eventually([&] {
            session.movePointerBy(15, 0);
            return session.areaOf(*settings).x > area.x;
        }));
        session.setButton(1, false);
        session.stillPicture();
        session.switchToDesktop(round == 0 ? 1 : 0);
        EXPECT_TRUE(disappears("Lumo Settings"));
        EXPECT_EQ(LumoProcess(desktop).process().waitForExit(), 0);
        EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == *settings; }))
            << "it comes to the desktop that the user is on";
        session.close(*settings);
        EXPECT_TRUE(disappears("Lumo Settings"));
    }
    EXPECT_EQ(lumo->stop(), 0);
    close(manager);
}

// As the desktop starts it: it says only what a user should know, and scripts drive it.
TEST_F(LumoShell, StartedByTheDesktopItIsQuietAndTakesRequests) {
    SampleApplication other(desktop, "Other", {{.area = {60, 80, 500, 400}}});
    writePreferences(desktop, {{"hasCompletedOnboarding", true}});
    const auto quiet = desktop.start({programUnderTest(), "--from-desktop"});
    dot();
    const auto request = [&](const std::string &action) {
        const auto client = desktop.start({"gapplication", "action", "app.lumo.Lumo", action});
        return client->waitForExit() == 0;
    };
    EXPECT_TRUE(request("on"));
    EXPECT_TRUE(isStored("isEnabled", "<true/>"));
    EXPECT_TRUE(request("set-cover"));
    EXPECT_TRUE(isStored("privacyCoverBundleID", "<string>Other</string>"));
    const auto client = desktop.start({"gapplication", "launch", "app.lumo.Lumo"});
    EXPECT_EQ(client->waitForExit(), 0);
    EXPECT_TRUE(appears("Lumo Settings"));
    EXPECT_FALSE(request("no-such-action"));
    EXPECT_TRUE(request("emergency-stop"));
    EXPECT_TRUE(session.eventually([&] { return !quiet->outputLines().empty(); }));
    EXPECT_TRUE(request("quit"));
    EXPECT_EQ(quiet->waitForExit(), 0);
    EXPECT_THAT(quiet->outputLines(),
                ElementsAre(StartsWith("[Lumo] Failed to send notification: ")));
    EXPECT_THAT(quiet->errorLines(), IsEmpty());
}

TEST_F(LumoShell, StatusItemOutlivesPanelAndBus) {
    lumo = std::make_unique<LumoProcess>(desktop, shownEffect("dim", 0.5));
    dot();
    panel->kill();
    EXPECT_TRUE(disappears("Lumo - Focus and privacy"));
    panel = desktop.start({"tint2"});
    dot();
    desktop.stopSessionBus();
    EXPECT_THAT(lumo->overlays(), SizeIs(1));
    ASSERT_TRUE(openPopover());
    session.press({Key::up}); // Quit Lumo
    session.press({Key::enter});
    EXPECT_EQ(lumo->process().waitForExit(), 0) << lumo->process().report();
    EXPECT_THAT(lumo->overlays(), IsEmpty());
}

} // namespace
} // namespace lumo::desktop
