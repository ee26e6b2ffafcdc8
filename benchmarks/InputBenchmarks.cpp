// What pointer events and idle triggers cost on a real X server. Prints numbers and judges none;
// wall times move with what else the machine does, hence processor times.

#include "ProcessUse.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "input/MouseShakeToggleManager.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/X11Backend.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/SingleInstance.h"
#include "settings/SettingsStore.h"
#include "support/Log.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <vector>

namespace {

// NOLINTNEXTLINE(*-non-const-global-variables): the allocator has no other place to count in
std::atomic<long> allocations = 0;

} // namespace

// Out of line, so that the compiler does not take one half of a pair for a mistake.
[[gnu::noinline]] void *operator new(std::size_t size) {
    ++allocations;
    if (void *memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void *memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void *memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace lumo::desktop {
namespace {

double threadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

// The whole way of an event from the connection's socket to the stroke detector, with everything of
// the backend listening, in batches as they come when the loop was busy.
void measureEvents() {
    constexpr int batches = 201;
    constexpr int eventsPerBatch = 500;
    PrivateDesktop desktop({.windowManager = WindowManager::none});
    DesktopSession &session = desktop.session();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs
    setenv("XDG_CONFIG_HOME", desktop.configDirectory().c_str(), 1);
    freedesktop::GlibMainLoop loop;
    Log log([](std::string_view) {});
    const auto connection = x11::Connection::open(desktop.displayName().c_str());
    const auto instance = x11::SingleInstance::claim(*connection);
    x11::X11Backend backend(*connection, *instance, loop, log, StartedBy::user, [] {});
    SettingsStore settings(backend.platform());
    MouseShakeToggleManager shake(backend.platform(), settings);
    int shakes = 0;
    shake.onShakeAction = [&shakes](auto) { ++shakes; };
    connection->dispatchUntil([] { return false; }, 0.5); // the devices are read
    auto &monitors = backend.input().eventMonitors();
    std::vector<double> microseconds;
    long allocated = 0;
    std::uint64_t sent = 0;
    for (int batch = 0; batch < batches; ++batch) {
        for (int event = 0; event < eventsPerBatch; ++event) {
            session.movePointerBy(event % 2 == 0 ? 3 : -3, 0);
        }
        const long allocationsBefore = allocations;
        const auto sentBefore = connection->bytesSent();
        const double start = threadSeconds();
        monitors.readMotion();
        microseconds.push_back((threadSeconds() - start) * 1e6 / eventsPerBatch);
        allocated += allocations - allocationsBefore;
        sent += connection->bytesSent() - sentBefore;
    }
    std::printf(
        "  pointer event, socket to detector: median %.2f us CPU, slowest of %d batches %.2f "
        "us; %.3f allocations and %.3f bytes of requests per event\n",
        median(microseconds), batches, *std::ranges::max_element(microseconds),
        static_cast<double>(allocated) / batches / eventsPerBatch,
        static_cast<double>(sent) / batches / eventsPerBatch);
    for (const int dx : {95, -95, 95, -95}) {
        session.movePointerBy(dx, 0);
        session.stacking(); // a round trip, by which the motion has arrived
        monitors.readMotion();
    }
    if (shakes != 1) {
        throw std::runtime_error("the events do not reach the detector");
    }
}

struct Cost {
    double seconds;
    double cpu;
    double turns;
};

// What the program uses while something is done every so often for some seconds.
template <class Step>
Cost costOf(LumoProcess &lumo, double seconds, Step step) {
    const double start = now();
    const double cpu = cpuSeconds(lumo.process().processIdentifier());
    const long turns = lumo.process().voluntarySwitches();
    while (now() - start < seconds) {
        step();
    }
    return {now() - start, cpuSeconds(lumo.process().processIdentifier()) - cpu,
            static_cast<double>(lumo.process().voluntarySwitches() - turns)};
}

// The real program with all triggers on and the effect off.
void measureProgram() {
    constexpr double seconds = 10;
    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    Preferences preferences = shownEffect("dim", 0.6);
    preferences["isEnabled"] = false;
    LumoProcess lumo(desktop, preferences);
    session.eventually([&] { return lumo.process().voluntarySwitches() > 20; });
    session.remains([] { return true; }, Seconds(1)); // it has started
    const Cost idle = costOf(lumo, seconds, [] { pauseBriefly(); });
    std::printf(
        "  idle with all triggers, effect off, %.0f s: %.3f s CPU, main loop sleeps %.1f/s\n",
        idle.seconds, idle.cpu, idle.turns / idle.seconds);
    for (const int rate : {125, 1000, 8000}) {
        long events = 0;
        const double start = now();
        const Cost moving = costOf(lumo, seconds, [&] {
            while (static_cast<double>(events) < (now() - start) * rate) {
                session.movePointerBy(events % 20 < 10 ? 1 : -1, 0);
                ++events;
            }
            timespec pause{0, 100000};
            nanosleep(&pause, nullptr);
        });
        std::printf("  %.0f pointer events per second: %.2f %% of a core, %.2f us per event, "
                    "wake-ups and libxcb included; main loop sleeps %.1f/s\n",
                    static_cast<double>(events) / moving.seconds, 100 * moving.cpu / moving.seconds,
                    (moving.cpu - idle.cpu) * 1e6 / static_cast<double>(events),
                    moving.turns / moving.seconds);
    }
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        lumo::desktop::measureEvents();
        lumo::desktop::measureProgram();
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
