// What the real program and its compositor cost on Wayland, measured from outside. Prints numbers
// and judges none; wall times move with what else the machine does.

#include "ProcessUse.h"
#include "wayland/PrivateSway.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

constexpr Area display = {0, 0, 1920, 1080};
constexpr double untilIdle = 6; // seconds, after which nothing is asked that could wait

void pause(double seconds) {
    const double end = now() + seconds;
    while (now() < end) {
        pauseBriefly();
    }
}

// sway with one display, two applications and Lumo.
class Desktop {
  public:
    explicit Desktop(const std::string &configuration)
        : sway({.configuration = "output * resolution 1920x1080\n" + configuration}) {
        for (const auto *name : {"Other", "Front"}) {
            applications.push_back(sway.startSample(name, "#d83c30", 600, 400));
        }
        measureIdle("idle before Lumo");
        lumo = sway.startLumo(shownEffect("dim", 1));
        const double end = now() + 20;
        while (sway.picture().at(0, 0) == Colour::parse("#3f3f3f") ||
               sway.picture().at(1, 540) == Colour::parse("#d83c30")) {
            if (now() > end) {
                throw std::runtime_error("no overlay came: " + lumo->report());
            }
        }
    }

    // What both used meanwhile.
    void measure(const std::string &what, const std::function<void()> &act) {
        const double start = now();
        const auto ownSeconds = [&] { return lumo ? cpuSeconds(lumo->processIdentifier()) : 0; };
        const auto ownWakeUps = [&] { return lumo ? lumo->voluntarySwitches() : 0; };
        const double own = ownSeconds();
        const double others = cpuSeconds(sway.process().processIdentifier());
        const long wakeUps = ownWakeUps();
        const long otherWakeUps = sway.process().voluntarySwitches();
        act();
        const double elapsed = now() - start;
        std::printf("  %s, %.0f s: Lumo %.2f %% of a core and %.1f wake-ups/s, sway %.2f %% and "
                    "%.1f/s\n",
                    what.c_str(), elapsed, (ownSeconds() - own) * 100 / elapsed,
                    static_cast<double>(ownWakeUps() - wakeUps) / elapsed,
                    (cpuSeconds(sway.process().processIdentifier()) - others) * 100 / elapsed,
                    static_cast<double>(sway.process().voluntarySwitches() - otherWakeUps) /
                        elapsed);
    }

    void measureIdle(const std::string &what) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
        const char *wanted = std::getenv("LUMO_BENCHMARK_IDLE_SECONDS");
        const double seconds = wanted != nullptr ? std::strtod(wanted, nullptr) : 20;
        pause(untilIdle);
        measure(what, [&] { pause(seconds); });
    }

    PrivateSway sway;
    std::vector<std::unique_ptr<ChildProcess>> applications;
    std::unique_ptr<ChildProcess> lumo;
};

// While the pointer goes on moving, which may mean that it drags something.
void measureActive(Desktop &desktop, const std::string &what) {
    desktop.measure(what, [&] {
        for (int i = 0; i < 100; ++i) {
            desktop.sway.hands().moveTo({1000 + i % 2, 1000}, display);
            pause(0.1);
        }
    });
}

// How wide the strip is that the overlay covers of a window which is dragged to the right: pictures
// at any moments of a drag by 12 points each 16 ms.
void measureTrail(Desktop &desktop) {
    constexpr int step = 12;
    constexpr int row = 300; // of the window's middle
    auto &sway = desktop.sway;
    sway.command("[app_id=Other] move absolute position 900 700");
    sway.command("[app_id=Front] move absolute position 100 100, focus");
    std::vector<int> widths;
    for (int drag = 0; drag < 12; ++drag) {
        sway.command("[app_id=Front] move absolute position 100 100");
        sway.hands().moveTo({200, 200}, display);
        sway.hands().setKey(EvdevKey::command, true);
        sway.hands().setButton(true);
        std::future<Picture> shot;
        for (int x = 200; x < 1100; x += step) {
            sway.hands().moveTo({x, 200}, display);
            if (x > 400 && !shot.valid()) {
                shot = std::async(std::launch::async, [&] { return sway.picture(); });
            }
            pause(0.016);
        }
        sway.hands().setButton(false);
        sway.hands().setKey(EvdevKey::command, false);
        const auto picture = shot.get();
        int covered = 0;
        for (int x = 0; x < picture.width(); ++x) {
            const auto colour = picture.at(x, row);
            covered += colour.red > 2 * colour.blue && colour != Colour::parse("#d83c30") ? 1 : 0;
        }
        widths.push_back(covered);
    }
    std::ranges::sort(widths);
    std::printf("  a window dragged by %d points each 16 ms: %d points of it covered (median), at "
                "most %d of 12 pictures\n",
                step, widths[widths.size() / 2], widths.back());
}

void printMemory(const ChildProcess &process) {
    const MemoryUse memory = memoryUse(process.processIdentifier());
    std::printf("  memory: %.1f MB resident, %.1f MB proportional\n", memory.residentMegabytes,
                memory.proportionalMegabytes);
}

void measureTiles() {
    std::printf("sway, 1920x1080, two tiled windows\n");
    Desktop desktop({});
    desktop.measureIdle("idle");
    printMemory(*desktop.lumo);
}

void measureFloating() {
    std::printf("sway, 1920x1080, floating windows\n");
    Desktop desktop("for_window [app_id=.] floating enable\nfloating_modifier Mod4");
    desktop.measureIdle("idle");
    printMemory(*desktop.lumo);
    measureActive(desktop, "while the pointer moves");
    measureTrail(desktop);
    auto &application = *desktop.applications.front();
    for (int i = 2; i < 500; ++i) {
        application.writeLine("window Window" + std::to_string(i) + " #6080a0 60 40");
    }
    const double end = now() + 30;
    while (desktop.sway.ask("get_tree").find("Window499") == std::string::npos && now() < end) {
    }
    measureActive(desktop, "500 windows, while the pointer moves");
    desktop.measureIdle("500 windows, idle");
    printMemory(*desktop.lumo);
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        lumo::desktop::measureTiles();
        lumo::desktop::measureFloating();
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
