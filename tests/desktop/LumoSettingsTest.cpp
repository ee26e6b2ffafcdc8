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

    static std::function<bool()> both(const std::function<bool()> &one,
                                      const std::function<bool()> &other) {
        return [one, other] { return one() && other(); };
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

    // Whether the keys, or whatever else somebody does, change nothing that is seen.
    std::function<bool()> ignored(const std::function<void()> &act) {
        return [this, act] {
            act();
            return session.remains([&] { return !isPlain(greenSpot); }, Seconds(0.3));
        };
    }
    std::function<bool()> ignored(const Chord &chord) {
        return ignored([this, chord] { session.press(chord); });
    }

    bool startsWithTheSession() const {
        return std::filesystem::exists(desktop.configDirectory() / "autostart" /
                                       "app.lumo.Lumo.desktop");
    }

    // Beside the settings window: over its own windows the program leaves the pointer alone.
    void shake() {
        session.movePointerTo(640, 720);
        for (const int dx : {95, -95, 95, -95}) {
            session.movePointerBy(dx, 0);
        }
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

TEST_F(LumoSettings, EveryControlIsWrittenAndInForceAtOnce) {
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
        {"full screen", {tab, space}, "pauseInFullscreen", "true"},
        {"peek duration",
         {tab, {Key::home}},
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
        {"speed", {tab, {Key::end}}, "transitionSpeed", "1"},
    });

    openPage(2);
    const auto isClear = [&](Spot spot) {
        return [this, spot] { return becomesPlain(spot, true); };
    };
    walk({
        {"cover", {tab, space}, "privacyCoverEnabled", "true"},
        // Without a Cover App, which would come to the front.
        {"keep on top", {tab, tab, tab, tab, tab, space}, "privacyCoverKeepAbove", "true"},
        {"keep on top", {space}, "privacyCoverKeepAbove", "false"},
    });
    openPage(2);
    walk({
        {"cover app", {tab, tab, {Key::down}}, "privacyCoverBundleID", "green", isClear(greenSpot)},
        {"frontmost",
         {tab, space},
         "privacyCoverBundleID",
         "red",
         both(isClear(redSpot), [&] { return becomesPlain(greenSpot, false); })},
    });
    SampleApplication azure(desktop, "azure", {{.area = {10, 420, 200, 200}, .colour = "#3c64e0"}});
    for (const auto window : {azure.window(), settings}) {
        session.activate(window);
        ASSERT_TRUE(session.eventually([&] { return session.activeWindow() == window; }));
    }
    session.stillPicture();
    walk({
        {"refresh",
         {tab, space, backTab, backTab, {Key::home}, {Key::down}},
         "privacyCoverBundleID",
         "azure"},
        {"bring forward", {tab, tab, tab, space}, "privacyCoverBringForwardOnStart", "false"},
        {"assign", {tab, tab, space}, "privacyCoverAutoAssignOnEnable", "false"},
        {"stability", {tab, {Key::right}}, "coverWindowLockDuration", "0.5"},
        {"screens", {tab, {Key::right}}, "multiScreenMode", "global"},
        {"screens", {{Key::left}}, "multiScreenMode", "perScreen"},
        {"clear", {tab, space}, "privacyCoverBundleID", ""},
        {"list", {{Key::left}}, "useWhitelistMode", "true"},
        {"list", {{Key::right}}, "useWhitelistMode", "false"},
    });
    // From the search field to the list, where the first of what is found is switched; then an
    // application is added, by its identifier in the dialog, and removed in the list.
    const auto changesRules = [&](const std::vector<Chord> &keys) {
        const auto before = stored("blacklist");
        for (const auto &chord : keys) {
            session.press(chord);
        }
        return session.eventually([&] { return stored("blacklist") != before; });
    };
    session.press(tab);
    session.type("final");
    EXPECT_TRUE(changesRules({tab, tab, {Key::down}, space})) << "switched";
    const auto withoutRed = stored("blacklist");
    session.press(backTab);
    session.press(space);
    const auto dialog = appears("Add App");
    ASSERT_TRUE(dialog);
    ASSERT_TRUE(session.eventually([&] { return session.activeWindow() == *dialog; }));
    EXPECT_EQ(LumoProcess(desktop).process().waitForExit(), 0);
    EXPECT_TRUE(session.remains([&] { return session.activeWindow() == *dialog; }, Seconds(0.3)))
        << "a window that is called to the front leaves the keys to its dialog";
    session.press(tab);
    session.press(tab);
    session.type("red");
    EXPECT_TRUE(changesRules({{Key::enter}})) << "added";
    ASSERT_TRUE(disappears("Add App"));
    session.stillPicture();
    openPage(2);
    for (int stop = 0; stop < 11; ++stop) {
        session.press(tab); // to the search field
    }
    for (int letter = 0; letter < 5; ++letter) {
        session.press({Key::erase});
    }
    EXPECT_TRUE(changesRules({tab, tab, {Key::down}, {Key::end}, {Key::remove}})) << "removed";
    EXPECT_EQ(stored("blacklist"), withoutRed);

    openPage(3);
    const auto peeks = [&](const Chord &chord) {
        return [this, chord] {
            session.press(chord);
            return becomesPlain(greenSpot, true) && becomesPlain(greenSpot, false);
        };
    };
    const auto shakes = [&] { shake(); };
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
        {"toggle keys", {}, "toggleShortcutModifiers", "4096"},
        {"toggle", {tab, space}, "toggleShortcutEnabled", "false", ignored({Key::control, Key::j})},
        {"peek keys",
         {tab, space, {Key::option, Key::k}},
         "peekShortcutKey",
         "40",
         peeks({Key::option, Key::k})},
        {"peek", {tab, space}, "peekShortcutEnabled", "false", ignored({Key::option, Key::k})},
        {"cover keys",
         {tab, space, {Key::control, Key::n}},
         "coverSetShortcutKey",
         "45",
         [&] {
             session.press({Key::control, Key::n});
             return session.eventually([&] { return !stored("privacyCoverBundleID").empty(); });
         }},
        {"cover", {tab, space}, "coverSetShortcutEnabled", "false"},
        {"shake", {tab, space}, "mouseShakeToggleEnabled", "false", ignored(shakes)},
        {"shake",
         {space},
         "mouseShakeToggleEnabled",
         "true",
         [&] {
             shake();
             // And back, as soon as it has had its rest.
             return becomesPlain(greenSpot, true) && session.eventually([&] {
                 shake();
                 return !isPlain(greenSpot);
             });
         }},
        {"shake action", {tab, space}, "shakeToggleActionEnabled", "false"},
        {"shake modifier", {tab, {Key::down}}, "shakeToggleModifier", "Shift"},
        {"shake peek", {tab, space}, "shakeToReveal", "false"},
        {"peek modifier", {tab, {Key::down}}, "shakePeekModifier", "Option"},
        {"sensitivity", {tab, {Key::home}}, "shakeSensitivity", "0"},
        {"reset",
         {tab, space},
         "toggleShortcutKey",
         "49",
         [&] {
             return toggledBy({Key::control, Key::space})();
         }},
    });
    EXPECT_EQ(lumo->stop(), 0);
}

} // namespace
} // namespace lumo::desktop
