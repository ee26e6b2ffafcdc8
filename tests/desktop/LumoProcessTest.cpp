#include "desktop/LumoProcess.h"

#include "Scene.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/RequestCounter.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace lumo::desktop {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;
using testing::SizeIs;

const Look look{{"dim", 0.6}};

// Two windows, the second of them in front.
class LumoProgram : public testing::Test {
  protected:
    LumoProgram() {
        session.activate(front.window());
        session.eventually([&] { return session.activeWindow() == front.window(); });
    }

    std::vector<Sight> rightSights() const {
        return {{"back", back.window(), {100, 200}, {0xd8, 0x3c, 0x30}, Shown::underEffect},
                {"front", front.window(), {600, 400}, {0x3c, 0x64, 0xe0}, Shown::plain}};
    }

    // The one instance of the display is there.
    bool hasStarted() { return session.selectionOwner("_LUMO_INSTANCE_S0") != XCB_NONE; }

    PrivateDesktop desktop{{.width = 900, .height = 700}};
    DesktopSession &session = desktop.session();
    SampleApplication back{desktop, "Back", {{.area = {60, 80, 420, 320}, .colour = "#d83c30"}}};
    SampleApplication front{
        desktop, "Front", {{.area = {360, 240, 420, 320}, .colour = "#3c64e0"}}};
};

TEST_F(LumoProgram, StopsCleanlyWhenItIsAskedTo) {
    for (const int number : {SIGTERM, SIGINT}) {
        LumoProcess lumo(desktop, look.preferences());
        lumo.waitForOverlays();
        lumo.process().signal(number);
        EXPECT_EQ(lumo.process().waitForExit(), 0) << lumo.process().report();
        EXPECT_THAT(lumo.overlays(), IsEmpty());
        EXPECT_TRUE(session.eventually([&] {
            return session.pixel(100, 200) == Colour{0xd8, 0x3c, 0x30};
        }));
    }
}

TEST_F(LumoProgram, EndsWithOneLineAndStatusOneWhenTheServerGoes) {
    LumoProcess lumo(desktop, look.preferences());
    lumo.waitForOverlays();
    desktop.killServer();
    EXPECT_EQ(lumo.process().waitForExit(), 1) << lumo.process().report();
    EXPECT_THAT(lumo.remarks(), SizeIs(1)) << lumo.process().report();
}

TEST_F(LumoProgram, YieldsToOneThatRunsAlready) {
    LumoProcess first(desktop, look.preferences());
    const auto overlays = first.waitForOverlays();
    LumoProcess second(desktop);
    EXPECT_EQ(second.process().waitForExit(), 0) << second.process().report();
    EXPECT_THAT(second.remarks(), SizeIs(1));
    EXPECT_TRUE(first.process().isRunning());
    EXPECT_EQ(first.overlays(), overlays);
    // Not on another display.
    PrivateDesktop other({.windowManager = WindowManager::none});
    LumoProcess third(other, look.preferences());
    EXPECT_THAT(third.waitForOverlays(), SizeIs(1));
}

TEST_F(LumoProgram, AsksTheServerNothingWhileNothingChanges) {
    LumoProcess lumo(desktop, look.preferences());
    Scene scene(desktop, lumo, look);
    ASSERT_EQ(scene.wrongWith(rightSights()), "");
    const auto ticks = [&](long count) {
        const long end = lumo.process().voluntarySwitches() + count;
        return session.eventually([&] { return lumo.process().voluntarySwitches() >= end; },
                                  Seconds(30));
    };
    ASSERT_TRUE(ticks(60)) << "the program's main loop does not turn";
    RequestCounter requests(desktop.displayName(), lumo.processIdentifier());
    ASSERT_TRUE(ticks(300));
    EXPECT_EQ(requests.count(), 0) << requests.describe();
    session.activate(back.window());
    EXPECT_TRUE(session.eventually([&] { return requests.count() > 0; }))
        << "a change of focus must be seen in the count";
}

TEST_F(LumoProgram, BlursInSilenceWhileNothingChanges) {
    LumoProcess lumo(desktop, Look{{"softBlur", 0.6}}.preferences());
    lumo.waitForOverlays();
    session.stillPicture();
    RequestCounter requests(desktop.displayName(), lumo.processIdentifier());
    const long end = lumo.process().voluntarySwitches() + 120;
    ASSERT_TRUE(session.eventually([&] { return lumo.process().voluntarySwitches() >= end; }));
    EXPECT_EQ(requests.count(), 0) << requests.describe();
}

TEST_F(LumoProgram, SetsGarbageAsideAndStaysOff) {
    fs::create_directories(preferencesFile(desktop).parent_path());
    std::ofstream(preferencesFile(desktop)) << "garbage {]";
    const auto isSetAside = [&] {
        for (const auto &entry : fs::directory_iterator(preferencesFile(desktop).parent_path())) {
            if (entry.path().filename().string().starts_with("app.lumo.Lumo.plist.broken-")) {
                std::ifstream stream(entry.path());
                std::string text;
                return std::getline(stream, text) && text == "garbage {]";
            }
        }
        return false;
    };
    LumoProcess lumo(desktop);
    EXPECT_TRUE(session.eventually(isSetAside)) << lumo.process().report();
    EXPECT_TRUE(session.eventually([&] { return hasStarted(); }));
    EXPECT_TRUE(session.remains(
        [&] { return lumo.overlays().empty() && lumo.process().isRunning(); }, Seconds(0.5)));
    EXPECT_EQ(lumo.stop(), 0);
    EXPECT_THAT(lumo.remarks(), SizeIs(1)) << lumo.process().report();
}

// A file in the way of the folder stops even a privileged user from writing.
TEST_F(LumoProgram, GoesOnWhereItCannotWriteItsSettings) {
    fs::remove_all(preferencesFile(desktop).parent_path());
    std::ofstream(preferencesFile(desktop).parent_path()) << "in the way";
    LumoProcess lumo(desktop);
    EXPECT_TRUE(session.eventually([&] { return hasStarted(); }));
    // Until its hot key is there: turning the effect on is a setting to write.
    bool isOn = false;
    for (int attempt = 0; attempt < 10 && !isOn; ++attempt) {
        session.press({Key::control, Key::space});
        isOn = session.eventually([&] { return lumo.overlays().size() == 1; }, Seconds(1));
    }
    EXPECT_TRUE(isOn) << lumo.process().report();
    EXPECT_TRUE(session.eventually([&] { return lumo.remarks().size() == 1; }));
    EXPECT_EQ(lumo.stop(), 0);
    EXPECT_THAT(lumo.remarks(), SizeIs(1)) << lumo.process().report();
}

// Looks at one pixel all the time, from a connection and a thread of its own, for how long it is
// darker than it may be.
class DarknessWatch {
  public:
    DarknessWatch(const std::string &displayName, Spot spot, Colour darkest)
        : session_(displayName)
        , thread_([this, spot, darkest] {
            using Clock = std::chrono::steady_clock;
            auto lightAt = Clock::now();
            while (!stop_) {
                const bool isLight = session_.pixel(spot).red + tolerance >= darkest.red;
                const auto now = Clock::now();
                lightAt = isLight ? now : lightAt;
                longest_ = std::max(longest_.load(), Seconds(now - lightAt).count());
                ++looks_;
            }
        }) {}
    ~DarknessWatch() {
        stop_ = true;
        thread_.join();
    }
    DarknessWatch(const DarknessWatch &) = delete;
    DarknessWatch &operator=(const DarknessWatch &) = delete;

    int looks() const { return looks_; }
    double longestDarkness() const { return longest_; } // seconds

  private:
    DesktopSession session_;
    std::atomic<int> looks_ = 0;
    std::atomic<double> longest_ = 0;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

// A translucent window without a compositing manager is opaque and dark, and that is what the
// server shows of a killed one's windows until the program has heard of it: about a frame, longer
// on a busy machine, hence the generous limit. How long it was stands in the test's properties.
TEST_F(LumoProgram, StaysRightWhileACompositingManagerComesAndGoes) {
    LumoProcess lumo(desktop, look.preferences());
    Scene scene(desktop, lumo, look);
    ASSERT_EQ(scene.wrongWith(rightSights()), "");
    const Spot spot = {100, 200};
    const Colour expected = look.over({0xd8, 0x3c, 0x30}, grainAt(900, spot));
    const DarknessWatch watch(desktop.displayName(), spot, expected);
    for (int round = 0; round < 3; ++round) {
        desktop.startCompositor(Compositor::picomXrender);
        EXPECT_TRUE(session.remains([&] { return lumo.process().isRunning(); }, Seconds(0.3)));
        EXPECT_EQ(scene.wrongWith(rightSights()), "") << "with a compositing manager";
        desktop.stopCompositor();
        EXPECT_TRUE(session.remains([&] { return lumo.process().isRunning(); }, Seconds(0.3)));
        EXPECT_EQ(scene.wrongWith(rightSights()), "") << "without one again";
    }
    RecordProperty("longestDarknessMilliseconds", static_cast<int>(watch.longestDarkness() * 1000));
    EXPECT_GT(watch.looks(), 200);
    EXPECT_LT(watch.longestDarkness(), 1);
}

// OpenGL's drivers are many times the program's size. This X server has no graphics hardware.
TEST_F(LumoProgram, LoadsDriversOnlyToDrawWithThem) {
    const Look blur{{"softBlur", 0.6}};
    const Spot inBack = {100, 200};
    for (const Environment &variables : {Environment(), Environment{{"LUMO_RENDERER", "gl"}}}) {
        LumoProcess lumo(desktop, blur.preferences(), variables);
        lumo.waitForOverlays();
        EXPECT_TRUE(session.eventually([&] {
            return session.pixel(inBack) != Colour{0xd8, 0x3c, 0x30};
        })) << lumo.process().report();
        std::ifstream file("/proc/" + std::to_string(lumo.processIdentifier()) + "/maps");
        const std::string maps(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(maps.find("_dri.so") != std::string::npos, !variables.empty());
        EXPECT_EQ(lumo.stop(), 0) << lumo.process().report();
    }
}

} // namespace
} // namespace lumo::desktop
