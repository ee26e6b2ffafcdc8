// What the real program costs on KWin for Wayland, measured from outside. Prints numbers and judges
// none; wall times move with what else the machine does.

#include "ProcessUse.h"
#include "wayland/PrivateKWin.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

void pause(double seconds) {
    const double end = now() + seconds;
    while (now() < end) {
        pauseBriefly();
    }
}

double quantile(std::vector<double> values, double share) {
    std::ranges::sort(values);
    return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

// KWin with two applications beside each other, the second of which has the focus, and Lumo.
class Desktop {
  public:
    explicit Desktop(const Environment &variables = {}) {
        for (const auto *name : {"Left", "Right"}) {
            applications.push_back(kwin.startSample(name, "#d83c30", 800, 800));
            kwin.script("each('" + std::string(name) + "', function (w) { w.frameGeometry = {x: " +
                        (applications.size() == 1 ? "100" : "1000") +
                        ", y: 100, width: 800, height: 800}; });");
        }
        lumo = kwin.startLumo(shownEffect("dim", 1), variables);
        await([&] { return !isClear(Side::left) && isClear(Side::right); }, "an overlay");
    }

    enum class Side { left, right };

    bool isClear(Side side) const {
        return kwin.picture().at(side == Side::left ? 500 : 1400, 500) == Colour::parse("#d83c30");
    }

    void focus(Side side) {
        kwin.click({side == Side::left ? 500 : 1400, 500});
        await([&] { return isClear(side); }, "the window that was clicked");
    }

    void await(const std::function<bool()> &condition, const std::string &what) const {
        const double end = now() + 30;
        while (!condition()) {
            if (now() > end) {
                throw std::runtime_error("waited for " + what + ": " + lumo->report());
            }
            pauseBriefly();
        }
    }

    PrivateKWin kwin{{.width = 1920, .height = 1080}};
    std::vector<std::unique_ptr<ChildProcess>> applications;
    std::unique_ptr<ChildProcess> lumo;
};

constexpr int changes = 40;
constexpr double rest = 0.5; // seconds after each, so that the pointer's way is no shake

Desktop::Side sideOf(int change) {
    return change % 2 == 0 ? Desktop::Side::left : Desktop::Side::right;
}

void measureIdle(const Desktop &desktop) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    const char *wanted = std::getenv("LUMO_BENCHMARK_IDLE_SECONDS");
    const double seconds = wanted != nullptr ? std::strtod(wanted, nullptr) : 60;
    const auto process = desktop.lumo->processIdentifier();
    pause(5); // what is left to do after the start
    const double before = cpuSeconds(process);
    const long wakeUpsBefore = desktop.lumo->voluntarySwitches();
    pause(seconds);
    std::printf("  idle for %.0f s with both scripts loaded: %ld wake-ups, %.3f ms CPU\n", seconds,
                desktop.lumo->voluntarySwitches() - wakeUpsBefore,
                std::max(cpuSeconds(process) - before, 0.0) * 1000);
    const auto memory = memoryUse(process);
    std::printf("  memory with nothing shown: %.1f MB resident, %.1f MB proportional\n",
                memory.residentMegabytes, memory.proportionalMegabytes);
}

// All of the program's work for a change of the focus, from the events to the commit.
void measureWork(Desktop &desktop) {
    const auto process = desktop.lumo->processIdentifier();
    std::vector<double> milliseconds;
    for (int change = 0; change < changes; ++change) {
        const double before = cpuSeconds(process);
        desktop.focus(sideOf(change));
        pause(rest);
        milliseconds.push_back((cpuSeconds(process) - before) * 1000);
    }
    std::printf("  CPU of a focus change, drawing included: median %.2f ms, p95 %.2f ms of %d\n",
                quantile(milliseconds, 0.5), quantile(milliseconds, 0.95), changes);
}

// Milliseconds on the protocol's trace that the line begins with; absent for other lines.
std::optional<double> timeOf(const std::string &line) {
    return line.starts_with('[') && line.find(']') != std::string::npos && line.find('@') > 0
               ? std::optional(std::strtod(line.c_str() + 1, nullptr))
               : std::nullopt;
}

// From the first event of a change of the focus to the last commit before the next one.
void measureCommit() {
    constexpr double debounce = 80;
    constexpr double apart = 150; // milliseconds at least between two changes
    Desktop desktop(Environment{{"WAYLAND_DEBUG", "1"}});
    const auto linesBefore = desktop.lumo->errorLines().size();
    for (int change = 0; change < changes; ++change) {
        desktop.focus(sideOf(change));
        pause(rest);
    }
    std::vector<double> milliseconds;
    double begun = 0;
    double committed = 0;
    const auto lines = desktop.lumo->errorLines();
    for (std::size_t i = linesBefore; i < lines.size(); ++i) {
        const auto time = timeOf(lines[i]);
        if (time && lines[i].find(".state_changed(") != std::string::npos &&
            *time > std::max(begun, committed) + apart) {
            if (committed > begun && begun > 0) {
                milliseconds.push_back(committed - begun - debounce);
            }
            begun = *time;
        } else if (time && lines[i].find(".commit(") != std::string::npos) {
            committed = *time;
        }
    }
    std::printf("  focus to commit, beyond the 80 ms of debounce: median %.2f ms, p95 %.2f ms of "
                "%zu\n",
                quantile(milliseconds, 0.5), quantile(milliseconds, 0.95), milliseconds.size());
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        std::printf("KWin, 1920x1080, two windows\n");
        {
            lumo::desktop::Desktop desktop;
            lumo::desktop::measureIdle(desktop);
            lumo::desktop::measureWork(desktop);
        }
        lumo::desktop::measureCommit();
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
