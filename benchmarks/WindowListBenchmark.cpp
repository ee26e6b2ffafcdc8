// What the window list costs on a real X server with 50 windows: making it after a change, and
// reading it when nothing has changed.

#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/X11Screens.h"
#include "platform/x11/windows/WindowMirror.h"
#include "platform/x11/windows/X11WindowServer.h"
#include "platform/x11/windows/X11Workspace.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

constexpr int windowCount = 50;

std::vector<desktop::SampleWindow> sampleWindows() {
    std::vector<desktop::SampleWindow> windows;
    windows.reserve(windowCount);
    for (int i = 0; i < windowCount; ++i) {
        windows.push_back(
            {.title = "Window " + std::to_string(i), .area = {8 * i, 6 * i, 400, 300}});
    }
    return windows;
}

struct Backend {
    desktop::PrivateDesktop desktop;
    desktop::SampleApplication application{desktop, "Sample", sampleWindows()};
    std::unique_ptr<Connection> connection = Connection::open(desktop.displayName().c_str());
    WindowMirror mirror{*connection};
    freedesktop::GlibMainLoop loop;
    X11Screens screens{*connection, loop};
    Log log{[](std::string_view) {}};
    X11Workspace workspace{*connection, mirror, log};
    X11WindowServer server{mirror, screens, workspace};

    // Moves a window and dispatches what comes of it.
    void change(int step) {
        const auto revision = mirror.revision();
        desktop.session().move(application.window(0), step % 2 * 10, 0);
        connection->dispatchUntil([&] { return mirror.revision() != revision; }, 10);
    }
};

void windowListAfterAChange(benchmark::State &state) {
    Backend backend;
    int step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        backend.change(++step);
        state.ResumeTiming();
        benchmark::DoNotOptimize(backend.server.onScreenWindows());
    }
    state.counters["windows"] = static_cast<double>(backend.server.onScreenWindows()->size());
}
BENCHMARK(windowListAfterAChange)->Unit(benchmark::kMicrosecond)->Iterations(300);

void windowListWithoutAChange(benchmark::State &state) {
    Backend backend;
    for (auto _ : state) {
        benchmark::DoNotOptimize(backend.server.onScreenWindows());
        benchmark::DoNotOptimize(backend.workspace.frontmostApplication());
    }
}
BENCHMARK(windowListWithoutAChange)->Unit(benchmark::kNanosecond);

void mirrorFromNothing(benchmark::State &state) {
    Backend backend;
    const auto before = backend.connection->bytesSent();
    for (auto _ : state) {
        const WindowMirror mirror(*backend.connection);
        benchmark::DoNotOptimize(mirror.stacking().size());
    }
    state.counters["bytes sent"] =
        benchmark::Counter(static_cast<double>(backend.connection->bytesSent() - before),
                           benchmark::Counter::kAvgIterations);
}
BENCHMARK(mirrorFromNothing)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace lumo::x11
