#include "ScriptedDesktop.h"
#include "overlay/OverlayManager.h"
#include "settings/SettingsStore.h"
#include "windows/WindowListService.h"

#include <benchmark/benchmark.h>

#include <string>

namespace lumo {
namespace {

using test::ScriptedDesktop;

constexpr int windowCount = 50;
constexpr int applicationCount = 20;

// Three displays side by side, and fifty windows of twenty applications scattered over them, most
// with a title that does not fit into a small string.
void fill(ScriptedDesktop &desktop) {
    desktop.plugDisplay(1, {0, 0, 1920, 1080});
    desktop.plugDisplay(2, {1920, 0, 2560, 1440});
    desktop.plugDisplay(3, {4480, 0, 1920, 1080});
    std::vector<ScriptedDesktop::ProcessID> applications;
    for (int i = 0; i < applicationCount; ++i) {
        const auto name = "Application " + std::to_string(i);
        applications.push_back(desktop.launch(name, "org.example.application" + std::to_string(i)));
    }
    for (int i = 0; i < windowCount; ++i) {
        const auto owner = applications[static_cast<std::size_t>(i % applicationCount)];
        const Rect bounds{i * 113.0, 360.0 + i % 7 * 40, 400.0 + i % 5 * 150, 300.0 + i % 4 * 100};
        desktop.openWindow(owner, bounds, "Document number " + std::to_string(i) + " of many");
    }
    desktop.focusApplication(applications.front());
}

// One whole tick of the refresh timer at 60 Hz while nothing on the desktop changes.
void unchangedTick(benchmark::State &state) {
    ScriptedDesktop desktop;
    fill(desktop);
    SettingsStore settings(desktop.platform());
    OverlayManager manager(desktop.platform(), settings);
    manager.startShowing();
    desktop.mainLoop.runBackgroundTasks();
    desktop.advance(1);
    for (auto _ : state) {
        desktop.advance(1.0 / 60);
        desktop.logLines.clear();
    }
}
BENCHMARK(unchangedTick)->Unit(benchmark::kMicrosecond)->Repetitions(9)->ReportAggregatesOnly();

void allVisibleWindows(benchmark::State &state) {
    ScriptedDesktop desktop;
    fill(desktop);
    const WindowListService service(desktop.platform().windowServer, desktop.platform().workspace);
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.allVisibleWindows());
    }
}
BENCHMARK(allVisibleWindows)->Unit(benchmark::kMicrosecond)->Repetitions(9)->ReportAggregatesOnly();

} // namespace
} // namespace lumo
