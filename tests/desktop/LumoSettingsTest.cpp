#include "Look.h"
#include "desktop/SampleApplication.h"
#include "desktop/ShellDesktop.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using Chord = std::vector<Key>;

const Chord space{Key::space};
const Chord tab{Key::tab};
const Chord backTab{Key::shift, Key::tab};

// Somebody goes through the settings window by the keyboard, with the effect on over two windows
// beside it.
class LumoSettings : public testing::Test, protected ShellDesktop {
  protected:
    // One stop on the way: what is pressed there, what the settings file holds after that, and what
    // is to be seen on the desktop.
    struct Stop {
        const char *name;
        std::vector<Chord> keys;
        const char *setting;
        const char *value; // without its tags; empty for none
        std::function<bool()> effect = {};
    };

    LumoSettings() {
        start({{"isEnabled", true}, {"effectMode", "dim"}, {"effectIntensity", 0.5}});
        lumo->waitForOverlays();
        session.activate(red.window());
        session.eventually([&] { return session.activeWindow() == red.window(); });
    }

    // Clicks the page's entry in the sidebar, which then has the focus.
    void openPage(int index) {
        const auto area = session.areaOf(settings);
        session.click({area.x + 80, area.y + 37 + 34 * index});
        session.stillPicture();
    }

    void walk(const std::vector<Stop> &stops) {
        for (const auto &stop : stops) {
            for (const auto &chord : stop.keys) {
                session.press(chord);
                if (chord == space && &chord != &stop.keys.back()) {
                    session.stillPicture(); // nobody types on before the button has answered
                }
            }
            EXPECT_TRUE(
                session.eventually([&] { return holds(stop.setting, stop.value); }, Seconds(3)))
                << stop.name << ": " << stop.setting << " is " << stored(stop.setting);
            EXPECT_TRUE(!stop.effect || stop.effect()) << stop.name << ": no such effect";
        }
    }

    bool holds(const std::string &setting, const std::string &value) {
        const auto held = stored(setting);
        if (held.starts_with("<real>") || held.starts_with("<integer>")) {
            const double number = std::strtod(held.c_str() + held.find('>') + 1, nullptr);
            return !value.empty() && std::abs(number - std::strtod(value.c_str(), nullptr)) < 1e-9;
        }
        return held == value || held == "<" + value + "/>" ||
               held == "<string>" + value + "</string>";
    }

    bool isPlain(Spot spot) {
        return session.pixel(spot) == (spot.x == redSpot.x ? redColour : greenColour);
    }
    bool becomesPlain(Spot spot, bool plain, Seconds deadline = Seconds(10)) {
        return session.eventually([&] { return isPlain(spot) == plain; }, deadline);
    }

    std::function<bool()> looks(const Look &look) {
        return [this, look] {
            const auto expected =
                look.over(greenColour, grainAt(session.screenArea().width, greenSpot));
            return session.eventually(
                [&] { return distance(session.pixel(greenSpot), expected) <= tolerance; });
        };
    }

    // Whether the keys turn the effect off and on again.
    std::function<bool()> toggledBy(const Chord &chord) {
        return [this, chord] {
            session.press(chord);
            const bool isOff = becomesPlain(greenSpot, true);
            session.press(chord);
            return becomesPlain(greenSpot, false) && isOff;
        };
    }

    bool startsWithTheSession() const {
        return std::filesystem::exists(desktop.configDirectory() / "autostart" /
                                       "app.lumo.Lumo.desktop");
    }

    const Colour redColour{0xd8, 0x3c, 0x30};
    const Colour greenColour{0x3c, 0xb4, 0x50};
    const Spot redSpot{60, 250};
    const Spot greenSpot{1160, 250};
    SampleApplication green{
        desktop, "green", {{.area = {1060, 40, 200, 300}, .colour = "#3cb450"}}};
    SampleApplication red{desktop, "red", {{.area = {10, 40, 200, 300}, .colour = "#d83c30"}}};
    xcb_window_t settings = XCB_NONE;
};

// One control of each kind; which setting each of them writes is tested off screen.
TEST_F(LumoSettings, OneControlOfEachKindIsInForceAtOnce) {
    const auto opened = openSettings();
    ASSERT_TRUE(opened) << lumo->process().report();
    settings = *opened;
    ASSERT_TRUE(becomesPlain(greenSpot, false));

    openPage(0);
    walk({
        {"login",
         {tab, space},
         "launchAtLogin",
         "true",
         [&] { return session.eventually([&] { return startsWithTheSession(); }); }},
        {"login",
         {space},
         "launchAtLogin",
         "false",
         [&] { return session.eventually([&] { return !startsWithTheSession(); }); }},
        {"peek duration",
         {tab, tab, {Key::home}},
         "peekDuration",
         "0.5",
         [&] {
             const double pressed = now();
             session.press({Key::option, Key::command, Key::tab});
             return becomesPlain(greenSpot, true) && becomesPlain(greenSpot, false) &&
                    now() - pressed < 1.8;
         }},
    });

    const auto dimmed = session.pixel(greenSpot);
    openPage(1);
    walk({
        {"effect",
         {tab, {Key::right}},
         "effectMode",
         "softBlur",
         [&] { return session.eventually([&] { return session.pixel(greenSpot) != dimmed; }); }},
        {"effect", {{Key::right}}, "effectMode", "tint"},
        {"without blur", {tab, space}, "blurFreeMode", "true", looks({{"tint", 0.5, true}})},
        {"intensity",
         {tab, {Key::right}},
         "effectIntensity",
         "0.55",
         looks({{"tint", 0.55, true}})},
    });

    openPage(2);
    walk({
        {"cover", {tab, space}, "privacyCoverEnabled", "true"},
        {"cover app",
         {tab, {Key::down}},
         "privacyCoverBundleID",
         "green",
         [&] { return becomesPlain(greenSpot, true); }},
        {"cover", {backTab, space}, "privacyCoverEnabled", "false"},
    });

    openPage(3);
    walk({
        {"toggle keys as they are in use",
         {tab, space, {Key::control, Key::space}},
         "toggleShortcutKey",
         "49",
         [&] { return !isPlain(greenSpot); }},
        {"toggle keys",
         {space, {Key::control, Key::j}},
         "toggleShortcutKey",
         "38",
         toggledBy({Key::control, Key::j})},
    });
    EXPECT_EQ(lumo->stop(), 0);
}

} // namespace
} // namespace lumo::desktop
