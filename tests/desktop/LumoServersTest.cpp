#include "Look.h"
#include "TwoWindows.h"
#include "desktop/LesserServer.h"
#include "desktop/LumoProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

enum class Outcome { shown, refused };

struct LesserCase {
    std::string name;
    std::vector<std::string> serverArguments;
    std::vector<std::string> hidden; // extensions that no argument takes away
    Outcome outcome = Outcome::shown;
    std::vector<std::string> remarks;
    int depth = 24;

    friend std::ostream &operator<<(std::ostream &stream, const LesserCase &each) {
        return stream << each.name;
    }
};

std::vector<std::string> without(std::initializer_list<const char *> extensions) {
    std::vector<std::string> arguments;
    for (const char *extension : extensions) {
        arguments.insert(arguments.end(), {"-extension", extension});
    }
    return arguments;
}

class LumoServers : public testing::TestWithParam<LesserCase>, protected TwoWindows {
  protected:
    LumoServers()
        : TwoWindows({.serverArguments = GetParam().serverArguments, .depth = GetParam().depth}) {
        if (!GetParam().hidden.empty()) {
            lesser.emplace(desktop.displayName(), GetParam().hidden);
        }
    }

    static bool isHidden(const std::string &extension) {
        return std::ranges::find(GetParam().hidden, extension) != GetParam().hidden.end();
    }

    void expectRefusal(LumoProcess &lumo) {
        EXPECT_TRUE(session.eventually([&] {
            EXPECT_THAT(lumo.overlays(), IsEmpty());
            return !lumo.process().isRunning();
        }));
        EXPECT_EQ(lumo.process().waitForExit(), 1) << lumo.process().report();
    }

    void expectShown(LumoProcess &lumo, bool isBackClear) {
        EXPECT_EQ(session.wrongUntilNone([&] {
            return wrongAt({70, 110, 256, 100}, {0xd8, 0x3c, 0x30}, isBackClear) +
                   wrongAt({510, 420, 256, 100}, {0x3c, 0x64, 0xe0}, !isBackClear);
        }),
                  "")
            << lumo.process().report();
    }

    // A part of a window, which is plain to the last pixel or on the average as under the effect.
    std::string wrongAt(const Area &part, Colour colour, bool isClear) {
        const Picture::Mean mean = session.picture(part).mean({0, 0, part.width, part.height});
        constexpr std::uint8_t meanGrain = 128;
        const Colour expected = isClear ? colour : look.over(colour, meanGrain);
        const double quantum = GetParam().depth == 16 ? 8 : 0;
        const double allowed = quantum + (isClear ? 0 : 3);
        return std::abs(mean.red - expected.red) <= allowed &&
                       std::abs(mean.green - expected.green) <= allowed &&
                       std::abs(mean.blue - expected.blue) <= allowed
                   ? std::string()
                   : std::to_string(mean.red) + " " + std::to_string(mean.green) + " " +
                         std::to_string(mean.blue) + " instead of " + expected.describe() + "; ";
    }

    // The effect, a click through it, the hot key that turns it off and on, the emergency stop.
    void expectToWork(LumoProcess &lumo) {
        expectShown(lumo, false);
        session.click({100, 200});
        expectShown(lumo, true);
        if (!isHidden("XInputExtension")) {
            expectShakeWithShiftToReveal(lumo);
        }
        for (const bool isOn : {false, true}) {
            const auto isToggled = [&] { return lumo.overlays().empty() != isOn; };
            session.setKey(Key::control, true);
            session.setKey(Key::space, true);
            EXPECT_TRUE(session.eventually(isToggled)) << lumo.process().report();
            EXPECT_TRUE(session.remains(isToggled, Seconds(1.2))) << "a key that is held repeats";
            session.setKey(Key::space, false);
            session.setKey(Key::control, false);
            session.stillPicture(); // a press right after a release is a repeat
        }
        session.press({Key::control, Key::option, Key::command, Key::d});
        EXPECT_TRUE(session.eventually([&] { return lumo.overlays().empty(); }))
            << lumo.process().report();
        EXPECT_EQ(lumo.stop(), 0);
    }

    // The modifier that is held with it counts.
    void expectShakeWithShiftToReveal(LumoProcess &lumo) {
        const auto areOverlaysGone = [&] { return lumo.overlays().empty(); };
        session.setKey(Key::shift, true);
        session.shakePointer(125);
        session.setKey(Key::shift, false);
        EXPECT_EQ(session.wrongUntilNone([&] {
            return wrongAt({510, 420, 256, 100}, {0x3c, 0x64, 0xe0}, true);
        }),
                  "")
            << lumo.process().report();
        EXPECT_FALSE(areOverlaysGone());
        expectShown(lumo, true);
    }

    const Look look{"dim", 0.6};
    std::optional<LesserServer> lesser;
};

TEST_P(LumoServers, EffectOrOneClearLine) {
    LumoProcess lumo(desktop, look.preferences(), lesser ? lesser->variables() : Environment{});
    if (GetParam().outcome == Outcome::refused) {
        expectRefusal(lumo);
    } else {
        expectToWork(lumo);
    }
    auto remarks = lumo.remarks();
    // There is no service that takes the notification of the emergency stop.
    std::erase_if(remarks, [](const std::string &line) {
        return line.starts_with("[Lumo] Failed to send notification");
    });
    EXPECT_THAT(remarks, ElementsAreArray(GetParam().remarks));
}

const std::string noShake =
    "[Lumo] the X server lacks XInput 2.2: no shake is seen, and the emergency stop is a hot key";
const std::string namedProcesses = "[Lumo] the X server lacks X-Resource 1.2: windows belong to "
                                   "the processes that they name themselves";
const std::string asLines = ": the effect is drawn as lines, without grain and blur";
const std::string takesClicks =
    ", without which an overlay would take every click: Lumo does not start";
const std::string asHotKey = ": the emergency stop is a hot key";

INSTANTIATE_TEST_SUITE_P(
    Lacking, LumoServers,
    testing::Values(
        LesserCase{"RenderAtDepth16",
                   without({"RENDER"}),
                   {},
                   Outcome::shown,
                   {"[Lumo] the X server lacks Render 0.10" + asLines},
                   16},
        LesserCase{"AllThatMayLack",
                   without({"COMPOSITE", "DAMAGE", "RENDER", "RANDR", "X-Resource"}),
                   {"XInputExtension", "XKEYBOARD", "BIG-REQUESTS"},
                   Outcome::shown,
                   {"[Lumo] the X server lacks Composite 0.4, Damage and Render 0.10" + asLines,
                    "[Lumo] the X server lacks RandR 1.5: all displays count as one", noShake,
                    "[Lumo] the X server lacks XKEYBOARD" + asHotKey, namedProcesses}},
        LesserCase{"Keyboard",
                   {},
                   {"XKEYBOARD"},
                   Outcome::shown,
                   {"[Lumo] the X server lacks XKEYBOARD" + asHotKey}},
        LesserCase{"FixesAndShape",
                   {},
                   {"XFIXES", "SHAPE"},
                   Outcome::refused,
                   {"[Lumo] the X server lacks XFixes 2 and Shape 1.1" + takesClicks}},
        LesserCase{"TrueColours",
                   {},
                   {},
                   Outcome::refused,
                   {"[Lumo] the display has no true colours (its depth is 8): Lumo does not start"},
                   8}),
    [](const auto &each) { return each.param.name; });

} // namespace
} // namespace lumo::desktop
