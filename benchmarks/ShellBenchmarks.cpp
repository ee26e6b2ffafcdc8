// What the status item, the popover and the settings window cost in the real program beside a real
// panel, measured from outside. Prints numbers and judges none; wall times move with what else the
// machine does.

#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

constexpr const char *dotTitle = "Lumo - Focus and privacy";

double now() {
    return Seconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// A desktop with a panel, and somebody who uses its dot.
class PanelDesktop {
  public:
    PanelDesktop() {
        desktop.startSessionBus();
        panel = desktop.start({"tint2"});
        wait([&] { return session.selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_NONE; }, "no tray");
    }

    void wait(const std::function<bool()> &condition, const char *otherwise) {
        if (!session.eventually(condition)) {
            throw std::runtime_error(otherwise);
        }
    }

    xcb_window_t find(const std::function<bool(xcb_window_t)> &fits) {
        std::vector<xcb_window_t> left{session.root()};
        while (!left.empty()) {
            const auto window = left.back();
            left.pop_back();
            if (fits(window) && session.isViewable(window)) {
                return window;
            }
            const auto children = session.childrenOf(window);
            left.insert(left.end(), children.begin(), children.end());
        }
        return XCB_NONE;
    }

    xcb_window_t titled(const std::string &title) {
        return find([&](xcb_window_t window) {
            return session.titleOf(window) == title && !session.classOf(window).empty();
        });
    }

    bool isPopoverShown() {
        const auto windows = session.stacking();
        return std::ranges::any_of(windows, [&](xcb_window_t window) {
            return session.titleOf(window) == "Lumo" && session.areaOf(window).width == 260 &&
                   session.isViewable(window);
        });
    }

    void usePopover(Spot dot) {
        session.click(dot, 3);
        wait([&] { return isPopoverShown() && session.isKeyboardGrabbed(); }, "no popover");
        session.press({Key::escape});
        wait([&] { return !isPopoverShown(); }, "the popover stays");
    }

    void useSettings() {
        LumoProcess second(desktop);
        second.process().waitForExit();
        xcb_window_t window = XCB_NONE;
        wait([&] { return (window = titled("Lumo Settings")) != XCB_NONE; }, "no settings");
        session.close(window);
        wait([&] { return titled("Lumo Settings") == XCB_NONE; }, "the settings stay");
    }

    Spot dot() {
        const auto area = session.areaOf(titled(dotTitle));
        return {area.x + area.width / 2, area.y + area.height / 2};
    }

    PrivateDesktop desktop{{.width = 1920, .height = 1080}};
    DesktopSession &session = desktop.session();
    std::unique_ptr<ChildProcess> panel;
};

void measureStart(PanelDesktop &place) {
    std::vector<double> milliseconds;
    for (int run = 0; run < 21; ++run) {
        const double start = now();
        LumoProcess lumo(place.desktop, {{"hasCompletedOnboarding", true}});
        place.wait([&] { return place.titled(dotTitle) != XCB_NONE; }, "no dot");
        milliseconds.push_back((now() - start) * 1000);
        lumo.stop();
        place.wait([&] { return place.titled(dotTitle) == XCB_NONE; }, "the dot stays");
    }
    std::ranges::sort(milliseconds);
    std::printf("  start to status item: median %.0f ms, slowest of 21 %.0f ms\n", milliseconds[10],
                milliseconds.back());
}

void printMemory(const ChildProcess &process, const std::string &when) {
    const MemoryUse memory = process.memoryUse();
    std::printf("  %-40s %.1f MB resident, %.1f MB proportional\n", when.c_str(),
                memory.residentMegabytes, memory.proportionalMegabytes);
}

void measureRounds(PanelDesktop &place) {
    LumoProcess lumo(place.desktop, {{"hasCompletedOnboarding", true}});
    place.wait([&] { return place.titled(dotTitle) != XCB_NONE; }, "no dot");
    place.session.stillPicture();
    const Spot dot = place.dot();
    printMemory(lumo.process(), "nothing shown yet");
    for (int round = 1; round <= 200; ++round) {
        place.usePopover(dot);
        if (round == 1 || round == 20 || round == 100 || round == 200) {
            printMemory(lumo.process(), "popover closed, round " + std::to_string(round));
        }
    }
    for (int round = 1; round <= 200; ++round) {
        place.useSettings();
        if (round == 1 || round == 20 || round == 100 || round == 200) {
            printMemory(lumo.process(), "settings closed, round " + std::to_string(round));
        }
    }
}

// All that can be on at once: live blur, a Cover App, the gesture, every shortcut.
void measureEverythingOn(PanelDesktop &place) {
    const SampleApplication covered(place.desktop, "Covered", {{}});
    const SampleApplication other(place.desktop, "Other", {{}});
    Preferences preferences = shownEffect("softBlur", 0.6);
    preferences["privacyCoverEnabled"] = true;
    preferences["privacyCoverBundleID"] = std::string("Covered");
    preferences["mouseShakeToggleEnabled"] = true;
    LumoProcess lumo(place.desktop, preferences);
    lumo.waitForOverlays();
    place.wait([&] { return place.titled(dotTitle) != XCB_NONE; }, "no dot");
    place.session.stillPicture();
    constexpr double seconds = 20;
    const double start = now();
    const double before = lumo.process().cpuSeconds();
    const double serverBefore = place.desktop.server().cpuSeconds();
    while (now() - start < seconds) {
        pauseBriefly();
    }
    const double elapsed = now() - start;
    std::printf("  idle with everything on: %.2f %% of a core, the X server %.2f %%\n",
                (lumo.process().cpuSeconds() - before) * 100 / elapsed,
                (place.desktop.server().cpuSeconds() - serverBefore) * 100 / elapsed);
    printMemory(lumo.process(), "with everything on");
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        lumo::desktop::PanelDesktop place;
        lumo::desktop::measureStart(place);
        lumo::desktop::measureRounds(place);
        lumo::desktop::measureEverythingOn(place);
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
