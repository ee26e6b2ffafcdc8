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

using testing::IsEmpty;
using testing::SizeIs;

class LumoShell : public testing::Test, protected ShellDesktop {};

TEST_F(LumoShell, GuidanceFirstThenTheStatusItem) {
    SampleApplication sample(desktop, "Sample", {{.title = "A document"}});
    lumo = std::make_unique<LumoProcess>(desktop);
    auto guidance = appears("Lumo");
    ASSERT_TRUE(guidance) << lumo->process().report();
    EXPECT_EQ(session.areaOf(*guidance).width, 400);
    EXPECT_EQ(session.areaOf(*guidance).height, 480);
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
    chooseRow(3); // Choose Cover App
    session.stillPicture();
    chooseRow(3); // after the way back: to clear, none, Lumo with its overlay, the sample
    EXPECT_TRUE(isStored("privacyCoverBundleID", "<string>Sample</string>"));
    EXPECT_TRUE(isStored("privacyCoverEnabled", "<true/>"));
    EXPECT_TRUE(isPopoverShown()) << "choosing leaves it open";
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());

    ASSERT_TRUE(openPopover());
    session.press({Key::up}); // the last row: Quit Lumo
    EXPECT_TRUE(session.remains([&] { return isPopoverShown(); }, Seconds(0.4)));
    session.press({Key::control, Key::space});
    EXPECT_TRUE(isStored("isEnabled", "<false/>")) << "shortcuts are no keys of the row's";
    session.setKey(Key::control, true);
    session.setKey(Key::space, true);
    EXPECT_TRUE(isStored("isEnabled", "<true/>"));
    EXPECT_TRUE(session.remains([&] { return stored("isEnabled") == "<true/>"; }, Seconds(0.8)))
        << "keys that repeat are pressed once";
    session.setKey(Key::space, false);
    session.setKey(Key::control, false);
    EXPECT_TRUE(isPopoverShown()) << "though the Cover App has come to the front";
    session.press({Key::enter});
    EXPECT_EQ(lumo->process().waitForExit(), 0) << lumo->process().report();
    EXPECT_THAT(windowsTitled("Lumo - Focus and privacy"), IsEmpty());
}

TEST_F(LumoShell, PopoverClosesOnActionsElsewhereAndClicksArrive) {
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
             {"a click on the desktop",
              [&] {
                  return session.click({700, 60}), true;
              }},
             {"another application that comes to the front",
              [&] {
                  // Not at once, or the panel could have taken the focus for the click.
                  session.remains([] { return true; }, Seconds(0.3));
                  session.activate(session.activeWindow() == one.window() ? two.window()
                                                                          : one.window());
                  return true;
              }},
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
    const auto area = session.areaOf(*settings);
    session.click({area.x + 80, area.y + 37 + 34 * 2}); // the page of the Cover App
    session.stillPicture();
    for (const Key key : {Key::tab, Key::tab, Key::space}) {
        session.press({key});
    }
    ASSERT_TRUE(session.eventually([&] { return session.isKeyboardGrabbed(); }));
    holdEmergencyKeys("picker");
}

TEST_F(LumoShell, SecondStartOpensTheSettings) {
    // A session manager that never answers: whoever reports to it waits for ever.
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

TEST_F(LumoShell, StatusItemOutlivesPanelAndBus) {
    lumo = std::make_unique<LumoProcess>(desktop, shownEffect("dim", 0.5));
    dot();
    panel->kill();
    EXPECT_TRUE(disappears("Lumo - Focus and privacy"));
    panel = desktop.start({"tint2"});
    dot();
    desktop.stopSessionBus();
    ASSERT_TRUE(openPopover());
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());
    EXPECT_THAT(lumo->overlays(), SizeIs(1));
    ASSERT_TRUE(clickInPopover({60, 273})) << "Quit Lumo";
    EXPECT_EQ(lumo->process().waitForExit(), 0) << lumo->process().report();
    EXPECT_THAT(lumo->overlays(), IsEmpty());
}

} // namespace
} // namespace lumo::desktop
