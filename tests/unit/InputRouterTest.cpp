#include "platform/x11/input/InputRouter.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using enum KeySource;

constexpr InputFocus elsewhere{};
constexpr InputFocus own{.hasKeyboard = true, .hasPointer = true, .isActive = true};
// A popup has grabbed the keyboard; window managers know nothing of it.
constexpr InputFocus popup{.hasKeyboard = true};
// As while a grab of this program's, for a hot key, has taken the keyboard from its window.
constexpr InputFocus active{.isActive = true};

enum class Step { press, hotKey, release, swallow, toolkitFocusOut };

struct Report {
    Step step;
    KeySource source;
    xcb_timestamp_t time;
    InputFocus focus;
    std::string route; // "global", "local", "hot key", "toolkit", those that apply; empty: nobody
    xcb_keycode_t keycode = 40;
};

std::string describe(const KeyRoute &route) {
    const std::string recipient = route.recipient == InputRecipient::globalMonitors ? "global"
                                  : route.recipient == InputRecipient::hotKey       ? "hot key"
                                  : route.recipient == InputRecipient::toolkit      ? "toolkit"
                                                                                    : "";
    const std::string separator = recipient.empty() ? "" : " ";
    return route.asksLocalMonitors ? "local" + separator + recipient : recipient;
}

struct Story {
    const char *name;
    std::vector<Report> reports;
    bool isAutoRepeatDetectable = true;
};

const std::vector<Story> stories = {
    {"another program has the focus",
     {{Step::press, raw, 1, elsewhere, "global"},
      {Step::press, raw, 5, elsewhere, "global"},
      {Step::press, raw, 5, elsewhere, "global", 41}}},
    {"an own window has the focus",
     {{Step::press, raw, 1, own, ""}, {Step::press, toolkit, 1, own, "local toolkit"}}},
    {"the toolkit is read first",
     {{Step::press, toolkit, 1, own, "local toolkit"}, {Step::press, raw, 1, own, ""}}},
    {"a popup's grab that is known",
     {{Step::press, raw, 1, popup, ""},
      {Step::press, toolkit, 1, popup, "local toolkit"},
      {Step::release, toolkit, 2, popup, ""},
      {Step::hotKey, raw, 3, popup, ""},
      {Step::hotKey, toolkit, 3, popup, "local hot key"}}},
    {"a popup's grab that is not known: the monitors receive the press once",
     {{Step::press, raw, 1, elsewhere, "global"},
      {Step::press, toolkit, 1, elsewhere, "toolkit"},
      {Step::release, toolkit, 2, elsewhere, ""},
      {Step::press, toolkit, 3, elsewhere, "local toolkit"},
      {Step::press, raw, 3, elsewhere, ""},
      {Step::release, toolkit, 4, elsewhere, ""},
      {Step::hotKey, raw, 5, elsewhere, "global"},
      {Step::hotKey, toolkit, 5, elsewhere, "hot key"}}},
    {"several keys before the toolkit is read",
     {{Step::press, raw, 1, elsewhere, "global"},
      {Step::press, raw, 2, elsewhere, "global", 41},
      {Step::press, toolkit, 1, elsewhere, "toolkit"},
      {Step::press, toolkit, 2, elsewhere, "toolkit", 41}}},
    {"a hot key, and its repeats",
     {{Step::hotKey, raw, 1, elsewhere, "global"},
      {Step::hotKey, grab, 1, elsewhere, "hot key"},
      {Step::hotKey, grab, 600, elsewhere, ""},
      {Step::press, grab, 640, elsewhere, ""}, // its modifier has been released
      {Step::release, grab, 650, elsewhere, ""},
      {Step::hotKey, grab, 700, elsewhere, "hot key"}}},
    {"repeats without detectable auto-repeat",
     {{Step::hotKey, grab, 1, elsewhere, "hot key"},
      {Step::release, grab, 600, elsewhere, ""},
      {Step::hotKey, grab, 600, elsewhere, ""},
      {Step::release, grab, 640, elsewhere, ""},
      {Step::hotKey, grab, 641, elsewhere, "hot key"}},
     false},
    {"a program that presses as soon as it has released",
     {{Step::hotKey, grab, 1, elsewhere, "hot key"},
      {Step::release, grab, 1, elsewhere, ""},
      {Step::hotKey, grab, 1, elsewhere, "hot key"},
      {Step::release, toolkit, 2, own, ""},
      {Step::press, raw, 2, own, ""},
      {Step::press, toolkit, 2, own, "local toolkit"}}},
    {"another key while a hot key is down", {{Step::press, grab, 1, elsewhere, ""}}},
    {"a hot key is recorded, and its repeats do nothing",
     {{Step::hotKey, raw, 1, own, ""},
      {Step::hotKey, grab, 1, active, "local hot key"},
      {Step::swallow, grab, 1, active, ""},
      {Step::hotKey, grab, 600, active, ""},
      {Step::release, grab, 610, active, ""},
      {Step::hotKey, grab, 700, active, "local hot key"}}},
    {"repeats go where the press went",
     {{Step::press, toolkit, 1, own, "local toolkit"},
      {Step::swallow, toolkit, 1, own, ""},
      {Step::release, toolkit, 600, own, ""},
      {Step::press, toolkit, 600, own, ""},
      {Step::release, toolkit, 640, own, ""},
      {Step::press, toolkit, 640, own, ""},
      {Step::release, toolkit, 650, own, ""},
      {Step::press, toolkit, 900, own, "local toolkit"},
      {Step::release, toolkit, 1500, own, ""},
      {Step::press, toolkit, 1500, own, "toolkit"},
      {Step::hotKey, toolkit, 1540, own, "toolkit"}}},
    {"a hot key of the toolkit's repeats",
     {{Step::hotKey, toolkit, 1, popup, "local hot key"},
      {Step::release, toolkit, 600, popup, ""},
      {Step::hotKey, toolkit, 600, popup, ""},
      {Step::release, toolkit, 640, popup, ""},
      {Step::press, toolkit, 640, popup, ""}}}, // its modifier has been released
    {"a release that another program received",
     {{Step::press, toolkit, 1, own, "local toolkit"},
      {Step::toolkitFocusOut, toolkit, 2, own, ""},
      {Step::press, toolkit, 90, own, "local toolkit"}}},
    {"a release that got lost",
     {{Step::hotKey, raw, 1, elsewhere, "global"},
      {Step::hotKey, grab, 1, elsewhere, "hot key"},
      {Step::hotKey, raw, 90, elsewhere, "global"},
      {Step::hotKey, grab, 90, elsewhere, "hot key"}}},
    {"a raw event that is read late forgets no key that is down",
     {{Step::hotKey, toolkit, 1, popup, "local hot key"},
      {Step::hotKey, raw, 1, popup, ""},
      {Step::hotKey, toolkit, 600, popup, ""}}},
};

TEST(InputRouterTest, KeyPresses) {
    for (const auto &story : stories) {
        InputRouter router(story.isAutoRepeatDetectable);
        int number = 0;
        for (const auto &report : story.reports) {
            const KeyStroke key{.source = report.source,
                                .keycode = report.keycode,
                                .time = report.time,
                                .isHotKey = report.step == Step::hotKey};
            std::string route;
            switch (report.step) {
            case Step::press:
            case Step::hotKey:
                route = describe(router.press(key, report.focus));
                break;
            case Step::release:
                router.release(key);
                break;
            case Step::swallow:
                router.noteSwallowed(key);
                break;
            case Step::toolkitFocusOut:
                router.toolkitLostKeyboard();
                break;
            }
            EXPECT_EQ(route, report.route) << story.name << ", report " << number;
            ++number;
        }
    }
}

TEST(InputRouterTest, PointerAndModifiers) {
    const InputFocus pointer{.hasPointer = true};
    EXPECT_EQ(InputRouter::motion(pointer), InputRecipient::nobody);
    EXPECT_EQ(InputRouter::motion(popup), InputRecipient::globalMonitors);
    EXPECT_EQ(InputRouter::modifierChange(pointer), InputRecipient::globalMonitors);
    EXPECT_EQ(InputRouter::modifierChange(popup), InputRecipient::nobody);
}

} // namespace
} // namespace lumo::x11
