#include "OverlayStories.h"

#include <gmock/gmock.h>

#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace lumo::test {
namespace {

using testing::SizeIs;

// A desktop with the engine on it; only one that announces its changes lets the ticks sleep.
struct Stage {
    explicit Stage(bool announcesChanges) { desktop.announcesChanges = announcesChanges; }

    // Everything that can be seen of it.
    std::string shown() {
        std::string text = settings.privacyCoverRuntimeStatus.value() + "\n";
        for (const auto number : desktop.stack()) {
            text += std::to_string(number) + " ";
        }
        for (const auto *overlay : desktop.openOverlays()) {
            text += "\n" + std::to_string(overlay->number) + " " + describe(overlay->frame) + " " +
                    std::to_string(overlay->alpha) + " " + std::to_string(overlay->orderedIn);
            for (const auto &layer : overlay->tree.value_or(LayerTree{}).layers) {
                text += " " + std::to_string(layer.opacity) + describe(layer.frame);
            }
        }
        return text;
    }

    ScriptedDesktop desktop;
    SettingsStore settings{desktop.platform()};
    std::unique_ptr<OverlayManager> manager;
};

TEST(TickSchedule, SleepingShowsTheSameAsEveryTick) {
    const auto seed = testing::UnitTest::GetInstance()->random_seed();
    SCOPED_TRACE(seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    Stage ticking(false);
    Stage sleeping(true);
    std::vector<ScriptedDesktop::WindowID> windows;
    std::vector<ScriptedDesktop::ProcessID> processes;
    std::string done;
    const auto onBoth = [&](const auto &step) {
        for (auto *stage : {&ticking, &sleeping}) {
            step(*stage);
        }
    };
    onBoth([&](Stage &stage) {
        stage.desktop.plugDisplay(7, {0, 0, 1440, 900});
        stage.manager = std::make_unique<OverlayManager>(stage.desktop.platform(), stage.settings);
        processes = {stage.desktop.launch("Editor", "org.example.Editor"),
                     stage.desktop.launch("Browser", "org.example.Browser")};
        stage.desktop.focusApplication(processes[0]);
        stage.manager->startShowing();
    });
    // Everything happens right before a tick would come, and is looked at right after it.
    constexpr double before = 1e-5;
    const auto anyWindow = [&](const auto &act) {
        if (!windows.empty()) {
            const auto window = windows[below(static_cast<unsigned>(windows.size()))];
            onBoth([&](Stage &stage) { act(stage.desktop, window); });
        }
    };
    const auto set = [&](auto setting, auto value) {
        onBoth([&](Stage &stage) { (stage.settings.*setting).set(value); });
    };
    const std::vector<std::pair<const char *, std::function<void()>>> steps = {
        {"open",
         [&] {
             const Rect bounds{100.0 * below(20), 100.0 * below(6), 700, 500};
             const auto owner = processes[below(2)];
             ScriptedDesktop::WindowID opened = 0;
             onBoth(
                 [&](Stage &stage) { opened = stage.desktop.openWindow(owner, bounds, "Page"); });
             windows.push_back(opened);
         }},
        {"close",
         [&] {
             if (windows.size() > 4) {
                 anyWindow([&](auto &desktop, auto window) {
                     desktop.closeWindow(window);
                     std::erase(windows, window);
                 });
             }
         }},
        {"focus", [&] { anyWindow([](auto &desktop, auto window) { desktop.focus(window); }); }},
        {"raise", [&] { anyWindow([](auto &desktop, auto window) { desktop.raise(window); }); }},
        {"move",
         [&] {
             const Rect bounds{100.0 * below(20), 100.0 * below(6), 600, 400};
             anyWindow([&](auto &desktop, auto window) { desktop.moveWindow(window, bounds); });
         }},
        {"retitle",
         [&] {
             const auto *title = below(2) == 0 ? "Page" : "Menu";
             anyWindow([&](auto &desktop, auto window) { desktop.retitle(window, title); });
         }},
        {"no focus", [&] { onBoth([](Stage &stage) { stage.desktop.focusApplication({}); }); }},
        {"space", [&] { onBoth([](Stage &stage) { stage.desktop.switchSpace(); }); }},
        {"plug",
         [&] {
             const double height = 900 + 10.0 * below(9);
             onBoth([&](Stage &stage) {
                 stage.desktop.unplugDisplay(9);
                 stage.desktop.plugDisplay(9, {1440, 0, 800, height});
             });
         }},
        {"unplug", [&] { onBoth([](Stage &stage) { stage.desktop.unplugDisplay(9); }); }},
        {"silent screens",
         [&] {
             const double width = 1440 + 10.0 * below(3);
             onBoth([&](Stage &stage) {
                 stage.desktop.setScreensSilently({{7, {0, 0, width, 900}, 1}});
             });
         }},
        {"mode",
         [&] {
             const auto mode =
                 std::vector{EffectMode::dim, EffectMode::tint, EffectMode::softBlur}[below(3)];
             set(&SettingsStore::effectMode, mode);
         }},
        {"intensity", [&] { set(&SettingsStore::effectIntensity, 0.1 * below(10)); }},
        {"without blur", [&] { set(&SettingsStore::blurFreeMode, below(2) == 0); }},
        {"global",
         [&] {
             set(&SettingsStore::multiScreenMode,
                 below(2) == 0 ? MultiScreenMode::global : MultiScreenMode::perScreen);
         }},
        {"cover", [&] { set(&SettingsStore::privacyCoverEnabled, below(3) != 0); }},
        {"cover app",
         [&] {
             const auto *name = std::vector{"org.example.Editor", "org.example.Browser",
                                            "org.example.None"}[below(3)];
             set(&SettingsStore::privacyCoverBundleID, std::optional<std::string>(name));
         }},
        {"keep in front", [&] { set(&SettingsStore::privacyCoverKeepAbove, below(2) == 0); }},
        {"lock", [&] { set(&SettingsStore::coverWindowLockDuration, 0.05 + 0.2 * below(3)); }},
        {"peek", [&] { onBoth([](Stage &stage) { stage.manager->peek(); }); }},
        {"end peek", [&] { onBoth([](Stage &stage) { stage.manager->endPeek(); }); }},
        {"stop", [&] { onBoth([](Stage &stage) { stage.manager->stopShowing(); }); }},
        // Whose ticks are counted from here on.
        {"start",
         [&] {
             onBoth([](Stage &stage) {
                 stage.desktop.advance(before);
                 stage.manager->startShowing();
                 stage.desktop.advance(TickSchedule::interval - before);
             });
         }},
    };
    onBoth([&](Stage &stage) { stage.desktop.advance(TickSchedule::interval - before); });
    int lateTicks = 0;
    for (int step = 0; step < 5000; ++step) {
        const auto &[name, run] = steps[below(static_cast<unsigned>(steps.size()))];
        done = std::string(name) + "\n" + done.substr(0, 300);
        run();
        const auto wait = 1 + below(30);
        for (auto ticks = 0U; ticks < wait || sleeping.shown() != ticking.shown(); ++ticks) {
            onBoth([&](Stage &stage) { stage.desktop.advance(1e-3); });
            // A setting may be assigned when the debounce is over and the next tick is still to
            // come, which begins another debounce.
            lateTicks += sleeping.shown() == ticking.shown() ? 0 : 1;
            ASSERT_LT(ticks, wait + 6) << sleeping.shown() << "\n"
                                       << ticking.shown() << "\n"
                                       << step << ", after " << done;
            onBoth([&](Stage &stage) { stage.desktop.advance(TickSchedule::interval - 1e-3); });
        }
    }
    EXPECT_LT(lateTicks, 50);
    EXPECT_EQ(sleeping.desktop.activations(), ticking.desktop.activations());
}

TEST(TickSchedule, SleepsUntilSomethingIsDueOrDifferent) {
    Stage stage(true);
    auto &desktop = stage.desktop;
    desktop.plugDisplay(7, {0, 0, 1440, 900});
    stage.manager = std::make_unique<OverlayManager>(desktop.platform(), stage.settings);
    const auto editor = desktop.launch("Editor", "org.example.Editor");
    desktop.openWindow(editor, {100, 100, 800, 600}, "One");
    const auto two = desktop.openWindow(editor, {300, 200, 800, 600}, "Two");
    desktop.focus(two);
    stage.manager->startShowing();
    desktop.advance(1);
    EXPECT_EQ(desktop.mainLoop.timerCount(), 0U) << "nothing wakes it";
    const auto commits = desktop.overlayOn(7).commits;
    desktop.advance(3600);
    EXPECT_EQ(desktop.overlayOn(7).commits, commits);

    const auto three = desktop.openWindow(editor, {200, 300, 800, 600}, "Three");
    desktop.advance(0.0799);
    EXPECT_EQ(desktop.windowAbove(desktop.overlayOn(7).number), two);
    desktop.advance(0.0002);
    EXPECT_EQ(desktop.windowAbove(desktop.overlayOn(7).number), three)
        << "the debounce is over after 0.08 s, not a tick later";

    // A storm costs no more than ticks that never sleep.
    desktop.advance(1);
    const auto before = desktop.overlayOn(7).commits;
    for (int i = 0; i < 2000; ++i) {
        desktop.moveWindow(three, {200 + 0.1 * i, 300, 800, 600});
        desktop.advance(0.0005);
    }
    EXPECT_LE(desktop.overlayOn(7).commits - before, 70);
    EXPECT_GE(desktop.overlayOn(7).commits - before, 55);
}

} // namespace
} // namespace lumo::test
