// What the status item, the popover and the settings window cost in the real program beside a real
// panel, measured from outside. Prints numbers and judges none; wall times move with what else the
// machine does.

#include "ProcessUse.h"
#include "desktop/SampleApplication.h"
#include "desktop/ShellDesktop.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

// Somebody who uses the dot and what it opens; what doesn't happen ends the benchmark.
class Somebody : public ShellDesktop {
  public:
    Somebody()
        : ShellDesktop({.width = 1920, .height = 1080}) {
        expect(session.eventually(
                   [&] { return session.selectionOwner("_NET_SYSTEM_TRAY_S0") != XCB_NONE; }),
               "a tray");
    }

    // Seconds from the click on the dot until the popover is shown.
    double usePopover() {
        const double start = now();
        session.click(dot(), 3);
        expect(session.eventually([&] { return isPopoverShown(); }), "the popover");
        const double taken = now() - start;
        expect(session.eventually([&] { return session.isKeyboardGrabbed(); }), "its keyboard");
        expect(session.eventually([&] { return !session.isPointerGrabbed(); }), "the click's end");
        session.press({Key::escape});
        expect(popoverCloses(), "the popover's end");
        return taken;
    }

    void useSettings() {
        const auto settings = openSettings();
        expect(settings.has_value(), "the settings");
        session.close(*settings);
        expect(disappears("Lumo Settings"), "the settings' end");
    }

    void stop() {
        lumo.reset();
        expect(disappears("Lumo - Focus and privacy"), "the dot's end");
    }

  private:
    static void expect(bool happened, const std::string &what) {
        if (!happened) {
            throw std::runtime_error("waited for " + what);
        }
    }
};

void measureStart(Somebody &user) {
    std::vector<double> milliseconds;
    for (int run = 0; run < 21; ++run) {
        const double start = now();
        user.start();
        milliseconds.push_back((now() - start) * 1000);
        user.stop();
    }
    std::ranges::sort(milliseconds);
    std::printf("  start to status item: median %.0f ms, slowest of 21 %.0f ms\n", milliseconds[10],
                milliseconds.back());
}

// Longer than the program takes to give back what it does not use.
void rest() {
    const double end = now() + 3;
    while (now() < end) {
        pauseBriefly();
    }
}

void printMemory(const ChildProcess &process, const std::string &when) {
    const MemoryUse memory = memoryUse(process.processIdentifier());
    std::printf("  %-40s %.1f MB resident, %.1f MB proportional\n", when.c_str(),
                memory.residentMegabytes, memory.proportionalMegabytes);
}

void measureRounds(Somebody &user) {
    user.start();
    user.session.stillPicture();
    printMemory(user.lumo->process(), "nothing shown yet");
    const auto measure = [&](const std::string &what, const std::function<void()> &use) {
        for (int round = 1; round <= 200; ++round) {
            use();
            if (round == 1 || round == 20 || round == 100 || round == 200) {
                rest();
                printMemory(user.lumo->process(), what + " closed, round " + std::to_string(round));
            }
        }
    };
    measure("popover", [&] { user.usePopover(); });
    measure("settings", [&] { user.useSettings(); });
    user.stop();
}

void measureOpening(Somebody &user) {
    user.start();
    user.session.stillPicture();
    std::printf("  click to popover: the first %.0f ms", user.usePopover() * 1000);
    for (const bool rests : {false, true}) {
        std::vector<double> milliseconds;
        for (int run = 0; run < 11; ++run) {
            if (rests) {
                rest();
            }
            milliseconds.push_back(user.usePopover() * 1000);
        }
        std::ranges::sort(milliseconds);
        std::printf(", %s median %.0f ms, slowest of 11 %.0f ms",
                    rests ? "after some seconds" : "soon again", milliseconds[5],
                    milliseconds.back());
    }
    std::printf("\n");
    user.stop();
}

// All that can be on at once: live blur, a Cover App, the gesture, every shortcut.
void measureEverythingOn(Somebody &user) {
    const SampleApplication covered(user.desktop, "Covered", {{}});
    const SampleApplication other(user.desktop, "Other", {{}});
    Preferences preferences = shownEffect("softBlur", 0.6);
    preferences["privacyCoverEnabled"] = true;
    preferences["privacyCoverBundleID"] = std::string("Covered");
    preferences["mouseShakeToggleEnabled"] = true;
    user.start(preferences);
    user.lumo->waitForOverlays();
    user.session.stillPicture();
    constexpr double seconds = 20;
    const double start = now();
    const double before = cpuSeconds(user.lumo->process().processIdentifier());
    const double serverBefore = cpuSeconds(user.desktop.server().processIdentifier());
    while (now() - start < seconds) {
        pauseBriefly();
    }
    const double elapsed = now() - start;
    std::printf("  idle with everything on: %.2f %% of a core, the X server %.2f %%\n",
                (cpuSeconds(user.lumo->process().processIdentifier()) - before) * 100 / elapsed,
                (cpuSeconds(user.desktop.server().processIdentifier()) - serverBefore) * 100 /
                    elapsed);
    printMemory(user.lumo->process(), "with everything on");
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        lumo::desktop::Somebody user;
        lumo::desktop::measureStart(user);
        lumo::desktop::measureOpening(user);
        lumo::desktop::measureRounds(user);
        lumo::desktop::measureEverythingOn(user);
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
