#include "desktop/LumoProcess.h"

#include "Look.h"
#include "TwoWindows.h"
#include "desktop/ProgramUnderTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;
using testing::SizeIs;

const Look look{{"dim", 0.6}};

class LumoProgram : public testing::Test, protected TwoWindows {};

TEST_F(LumoProgram, CleanStopOnSignals) {
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

TEST_F(LumoProgram, ArgumentsAreAnsweredAndNothingStarts) {
    const std::map<std::string, int> statuses{
        {"--help", 0}, {"--version", 0}, {"-h", 2}, {"", 2}, {"--from-desktop=", 2}};
    for (const auto &[argument, status] : statuses) {
        const auto lumo = desktop.start({programUnderTest(), argument}, {{"DISPLAY", ""}});
        EXPECT_EQ(lumo->waitForExit(), status) << argument;
        EXPECT_THAT(status == 0 ? lumo->outputLines() : lumo->errorLines(),
                    testing::ElementsAre(testing::ContainsRegex("^Lumo [0-9.]+ .*lumo\\(1\\)")));
        EXPECT_THAT(status == 0 ? lumo->errorLines() : lumo->outputLines(), IsEmpty());
    }
}

TEST_F(LumoProgram, LossOfTheServerEndsTheProgramWithStatusOne) {
    LumoProcess lumo(desktop, look.preferences());
    lumo.waitForOverlays();
    desktop.killServer();
    EXPECT_EQ(lumo.process().waitForExit(), 1) << lumo.process().report();
    EXPECT_THAT(lumo.remarks(), SizeIs(1)) << lumo.process().report();
}

TEST_F(LumoProgram, SleepsWhileNothingChanges) {
    LumoProcess lumo(desktop, Look{{"softBlur", 0.6}}.preferences());
    lumo.waitForOverlays();
    session.stillPicture();
    const auto turns = [&] { return lumo.process().voluntarySwitches(); };
    const auto sleeps = [&](Seconds time) {
        const long most = turns() + 5; // a message bus is looked for now and then
        return session.remains([&] { return turns() <= most; }, time);
    };
    EXPECT_TRUE(session.eventually([&] { return sleeps(Seconds(1)); })) << "once it has started";
    EXPECT_TRUE(sleeps(Seconds(3)));
    const long before = turns();
    session.activate(back.window());
    EXPECT_TRUE(session.eventually([&] { return turns() > before; }));
}

TEST_F(LumoProgram, ShakeIsRecognisedHoweverOftenTheMouseReports) {
    LumoProcess lumo(desktop, look.preferences());
    lumo.waitForOverlays();
    bool isOn = true;
    for (const char *resources : {"Xft.dpi:\t96\n", "Xft.dpi:\t192\n"}) {
        session.setText(session.root(), "RESOURCE_MANAGER", "STRING", resources);
        for (const double rate : {60, 125, 500, 1000, 8000}) {
            const auto isToggled = [&] { return lumo.overlays().empty() == isOn; };
            session.shakePointer(rate);
            EXPECT_TRUE(session.eventually(isToggled)) << rate << " Hz, " << resources;
            isOn = !isOn;
            session.remains([] { return true; }, Seconds(1)); // within which another is no shake
        }
    }
}

// OpenGL's drivers are many times the program's size. This X server has no graphics hardware.
TEST_F(LumoProgram, DriversAreLoadedOnlyToDrawWithThem) {
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
