#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

// A person at a desktop with a panel, who starts the program for the first time.
class LumoShell : public testing::Test {
  protected:
    LumoShell() {
        desktop.startSessionBus();
        panel = desktop.start({"tint2"});
    }

    // What is on screen under that title, frames of window managers aside.
    std::vector<xcb_window_t> windowsTitled(const std::string &title) {
        std::vector<xcb_window_t> found;
        std::vector<xcb_window_t> left{session.root()};
        while (!left.empty()) {
            const auto window = left.back();
            left.pop_back();
            if (session.titleOf(window) == title && session.classOf(window) != "" &&
                session.isViewable(window)) {
                found.push_back(window);
            }
            for (const auto child : session.childrenOf(window)) {
                left.push_back(child);
            }
        }
        return found;
    }

    std::optional<xcb_window_t> appears(const std::string &title) {
        std::vector<xcb_window_t> found;
        session.eventually([&] { return (found = windowsTitled(title)).size() == 1; });
        return found.size() == 1 ? std::optional(found.front()) : std::nullopt;
    }

    bool disappears(const std::string &title) {
        return session.eventually([&] { return windowsTitled(title).empty(); });
    }

    Spot dot() {
        const auto icon = appears("Lumo - Focus and privacy");
        if (!icon) {
            throw std::runtime_error("no dot: " + lumo->process().report() + panel->report());
        }
        const auto area = session.areaOf(*icon);
        return {area.x + area.width / 2, area.y + area.height / 2};
    }

    bool isPopoverShown() { return popover().has_value(); }

    std::optional<Area> popover() {
        for (const auto window : session.stacking()) {
            const auto area = session.areaOf(window);
            if (session.isOverrideRedirect(window) && session.isViewable(window) &&
                session.titleOf(window) == "Lumo" && area.width == 260 && area.height == 300) {
                return area;
            }
        }
        return std::nullopt;
    }

    bool openPopover() {
        session.click(dot(), 3);
        return session.eventually([&] { return isPopoverShown(); }) &&
               session.eventually([&] { return session.isKeyboardGrabbed(); });
    }

    bool popoverCloses() {
        return session.eventually([&] { return !isPopoverShown(); });
    }

    // The row, counted from the first, of the page that the popover has just come to show.
    void chooseRow(int row) {
        for (int step = 0; step <= row; ++step) {
            session.press({Key::down});
        }
        session.press({Key::enter});
    }

    // Whether the settings file has the text, indentation aside.
    bool isStoredNow(const std::string &text) {
        std::ifstream file(preferencesFile(desktop));
        std::string all(std::istreambuf_iterator<char>(file), {});
        std::erase_if(all, [](char letter) { return letter == '\n' || letter == '\t'; });
        return all.find(text) != std::string::npos;
    }

    bool isStored(const std::string &text) {
        return session.eventually([&] { return isStoredNow(text); });
    }

    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    std::unique_ptr<ChildProcess> panel;
    std::unique_ptr<LumoProcess> lumo;
};

TEST_F(LumoShell, GuidesFirstAndIsThenRunFromTheDot) {
    SampleApplication sample(desktop, "Sample", {{.title = "A document"}});
    lumo = std::make_unique<LumoProcess>(desktop);
    auto guidance = appears("Lumo");
    ASSERT_TRUE(guidance) << lumo->process().report();
    EXPECT_EQ(session.areaOf(*guidance).width, 400);
    EXPECT_EQ(session.areaOf(*guidance).height, 480);
    session.close(*guidance);
    EXPECT_TRUE(isStored("<key>hasCompletedOnboarding</key><true/>"));
    ASSERT_TRUE(disappears("Lumo"));

    session.click(dot(), 1);
    EXPECT_TRUE(session.remains([&] { return !isPopoverShown(); }, Seconds(0.3)));
    ASSERT_TRUE(openPopover());
    const auto area = *popover();
    const auto screen = session.screenArea();
    EXPECT_TRUE(area.x >= 0 && area.y >= 0 && area.x + area.width <= screen.width &&
                area.y + area.height <= screen.height);
    session.click(dot(), 3);
    EXPECT_TRUE(popoverCloses()) << "the second click";
    ASSERT_TRUE(openPopover());
    session.click({5, 5});
    EXPECT_TRUE(popoverCloses()) << "a click elsewhere";
    ASSERT_TRUE(openPopover());
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());

    ASSERT_TRUE(openPopover());
    chooseRow(0); // Turn Lumo On
    EXPECT_TRUE(popoverCloses());
    EXPECT_THAT(lumo->waitForOverlays(), SizeIs(1));
    EXPECT_TRUE(isStored("<key>isEnabled</key><true/>"));

    ASSERT_TRUE(openPopover());
    chooseRow(3); // Choose Cover App
    session.stillPicture();
    chooseRow(3); // after the way back: to clear, none, Lumo with its overlay, the sample
    EXPECT_TRUE(isStored("<key>privacyCoverBundleID</key><string>Sample</string>"));
    EXPECT_TRUE(isStored("<key>privacyCoverEnabled</key><true/>"));
    EXPECT_TRUE(isPopoverShown()) << "choosing leaves it open";
    session.press({Key::escape});
    EXPECT_TRUE(popoverCloses());

    ASSERT_TRUE(openPopover());
    session.press({Key::up}); // the last row: Quit Lumo
    session.press({Key::enter});
    EXPECT_EQ(lumo->process().waitForExit(), 0) << lumo->process().report();
    EXPECT_THAT(windowsTitled("Lumo - Focus and privacy"), IsEmpty());
}

TEST_F(LumoShell, StartingItAgainOpensTheSettingsOfTheOneThatRuns) {
    lumo = std::make_unique<LumoProcess>(desktop, Preferences{{"hasCompletedOnboarding", true}});
    dot();
    for (int round = 0; round < 2; ++round) {
        for (int start = 0; start < 2; ++start) {
            LumoProcess second(desktop);
            EXPECT_EQ(second.process().waitForExit(), 0);
        }
        const auto settings = appears("Lumo Settings");
        ASSERT_TRUE(settings) << lumo->process().report();
        EXPECT_EQ(session.areaOf(*settings).width, 800);
        EXPECT_EQ(session.areaOf(*settings).height, 540);
        EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == *settings; }));
        session.close(*settings);
        EXPECT_TRUE(disappears("Lumo Settings"));
    }
    EXPECT_EQ(lumo->stop(), 0);
}

TEST_F(LumoShell, TheDotOutlivesThePanelAndTheBus) {
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
    EXPECT_EQ(lumo->stop(), 0);
}

} // namespace
} // namespace lumo::desktop
