#include "OverlayStories.h"

#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Step = OverlayManager::RenderStep;

class OverlayUpdate : public test::OverlayStories {};

TEST_F(OverlayUpdate, FrontmostWindowOfEachDisplayIsClear) {
    const auto report = openOn(left, editor);
    const auto page = openOn(right, browser);
    const auto otherPage = openOn(right, browser);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), report);
    EXPECT_EQ(clearOn(right), otherPage);
    EXPECT_EQ(desktop.overlayOn(left).level, 0);

    desktop.focus(page);
    settle();
    EXPECT_EQ(clearOn(left), report);
    EXPECT_EQ(clearOn(right), page);

    desktop.closeWindow(report);
    settle();
    EXPECT_EQ(clearOn(left), std::nullopt) << "the whole display is covered";
    EXPECT_TRUE(desktop.overlayOn(left).orderedIn);
}

TEST_F(OverlayUpdate, OneFocusForAllDisplays) {
    settings.multiScreenMode.set(MultiScreenMode::global);
    openOn(left, browser);
    const auto report = openOn(left, editor);
    const auto page = openOn(right, browser);
    desktop.focusApplication(editor);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), report);
    EXPECT_EQ(clearOn(right), report);

    desktop.closeWindow(report);
    settle();
    EXPECT_EQ(clearOn(left), page) << "the editor has no window: the frontmost of all";
    EXPECT_EQ(clearOn(right), page);
}

TEST_F(OverlayUpdate, MenusAndDocksStayAboveWithoutAClearWindow) {
    const auto dock = desktop.openWindow(desktop.launch("Dock", {}), {0, 800, 1440, 100}, {}, 20);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), dock);
    EXPECT_EQ(clearOn(right), dock);
}

// What is never the window that the user works in.
TEST_F(OverlayUpdate, WindowsThatCanNotStayClear) {
    const auto report = openOn(left, editor);
    const auto dock = desktop.launch("Control Center", {});
    const auto stageManager = desktop.launch("WindowManager", {});
    const auto other = desktop.launch("Lumo", "org.example.lookalike");
    openOn(left, dock);
    openOn(left, stageManager);
    openOn(left, other);
    openOn(left, desktop.lumo());
    openOn(left, browser, "Find in page popover");
    desktop.openWindow(browser, {100, 300, 100, 600}, "narrow");
    desktop.openWindow(browser, {100, 300, 800, 100}, "flat");
    desktop.openWindow(browser, {100, 300, 800, 600}, "kept on top", 3);
    manager->startShowing();
    settle();
    EXPECT_EQ(clearOn(left), report);

    const auto slim = desktop.openWindow(browser, {100, 300, 101, 700}, "slim");
    desktop.closeWindow(report);
    settle();
    EXPECT_EQ(clearOn(left), slim) << "101 points are enough when there is nothing better";

    // Where system components are not told by name, their namesakes are programs like others.
    desktop.capabilities.systemComponentsHaveNames = false;
    manager = std::make_unique<OverlayManager>(desktop.platform(), settings);
    manager->startShowing();
    const auto controls = openOn(left, desktop.launch("Control Center", {}));
    settle();
    EXPECT_EQ(clearOn(left), controls);
}

TEST_F(OverlayUpdate, ClearWindowChangesAfterTheDebounce) {
    const auto a = openOn(left, editor);
    const auto b = openOn(left, browser);
    desktop.focus(a);
    manager->startShowing();
    settle();
    desktop.logLines.clear();

    desktop.focus(b); // its notification is the first to see the change
    EXPECT_EQ(clearOn(left), a);
    desktop.advance(0.079);
    EXPECT_EQ(clearOn(left), a);
    desktop.advance(0.02);
    EXPECT_EQ(clearOn(left), b);
    settle();

    desktop.focus(a);
    desktop.advance(0.05);
    desktop.focus(b);
    desktop.advance(0.05);
    desktop.focus(a);
    desktop.advance(0.075);
    EXPECT_EQ(clearOn(left), b) << "wanted for less than the time since it was wanted last";
    settle();
    EXPECT_EQ(clearOn(left), a);
}

TEST_F(OverlayUpdate, EffectsAreAppliedAtOnce) {
    openOn(left, editor);
    manager->startShowing();
    struct Case {
        EffectMode mode;
        double intensity;
        bool blurFree;
        float tint;
        bool showsBackdrop;
    };
    const std::vector<Case> cases = {
        {EffectMode::softBlur, 0.6, false, 0.0F, true},
        {EffectMode::softBlur, 0.6, true, 0.36F, false},
        {EffectMode::dim, 1, false, 0.52F, false},
        {EffectMode::tint, 0, false, 0.1F, false},
        {EffectMode::softBlur, 0, false, 0.0F, true},
    };
    for (const auto &[mode, intensity, blurFree, tint, hasBackdrop] : cases) {
        settings.effectMode.set(mode);
        settings.effectIntensity.set(intensity);
        settings.blurFreeMode.set(blurFree);
        tick();
        EXPECT_FLOAT_EQ(tintOn(left), tint);
        EXPECT_EQ(showsBackdrop(shownOn(left)), hasBackdrop);
        EXPECT_EQ(shownOn(left).viewAlpha, 1);
    }
}

TEST_F(OverlayUpdate, UnchangedTickPutsOnlyTheOrderRight) {
    const auto report = openOn(left, editor);
    manager->startShowing();
    settle();
    auto &overlay = desktop.overlayOn(left);
    const int drawn = overlay.changedCommits;
    const auto before = desktop.platform().windowServer.onScreenWindows();
    desktop.advance(1);
    EXPECT_EQ(overlay.changedCommits, drawn);
    EXPECT_EQ(desktop.platform().windowServer.onScreenWindows(), before)
        << "two overlays leave each other in place";

    // Another client pushes a window between the overlay and the clear window.
    const auto page = openOn(left, browser);
    desktop.raise(report);
    overlay.level = 3;
    tick();
    EXPECT_EQ(clearOn(left), report);
    EXPECT_EQ(overlay.level, 0);
    EXPECT_THAT(desktop.stack(),
                ElementsAre(desktop.overlayOn(right).number, report, overlay.number, page));
}

TEST_F(OverlayUpdate, OwnWindowInFrontLeavesTheLastApplicationClear) {
    settings.multiScreenMode.set(MultiScreenMode::global);
    const auto page = openOn(left, browser);
    const auto report = openOn(left, editor);
    desktop.focus(report);
    desktop.raise(page);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), report) << "the editor is in front, whatever lies above";

    const auto settingsWindow = openOn(left, desktop.lumo(), "Settings");
    desktop.focus(settingsWindow);
    settle();
    EXPECT_EQ(clearOn(left), page) << "the owner of the frontmost candidate";

    desktop.closeWindow(page);
    desktop.closeWindow(report);
    settle();
    EXPECT_EQ(clearOn(left), std::nullopt);
    const auto dialog = desktop.openWindow(editor, {100, 100, 250, 190});
    const auto popup = desktop.openWindow(browser, {100, 100, 150, 150});
    desktop.focusApplication(std::nullopt);
    settle();
    EXPECT_EQ(clearOn(left), popup) << "nobody is in front: the frontmost window";
    desktop.setLumoBundleIdentifier(std::nullopt);
    desktop.raise(dialog);
    settle();
    EXPECT_EQ(clearOn(left), dialog) << "no identifier equals no identifier: Lumo is in front";
}

TEST_F(OverlayUpdate, StripsOfRecentApplicationsAreCutOut) {
    const auto strips = desktop.launch(test::ScriptedDesktop::stripOwner, "org.example.Strips");
    // On the left display, whose top is 180 points below the highest edge.
    desktop.openWindow(strips, {0, 280, 200, 600});
    openOn(left, editor);
    manager->startShowing();
    EXPECT_FALSE(shownOn(left).mask.has_value());

    const auto cutOuts = [this] {
        tick();
        const auto &mask = shownOn(left).mask;
        return mask ? mask->rectangles.size() - 1 : 0;
    };
    desktop.stripsEnabled = true;
    EXPECT_EQ(cutOuts(), 1U);
    EXPECT_EQ(shownOn(left).mask->rectangles.back(), (Rect{0, 196, 204, 608}));
    EXPECT_FALSE(shownOn(right).mask.has_value());
    desktop.stripsEnabled.reset();
    EXPECT_EQ(cutOuts(), 1U) << "the last known value stays in force";
    desktop.stripsEnabled = false;
    EXPECT_EQ(cutOuts(), 0U);
}

TEST_F(OverlayUpdate, LogLinesAtMostFiveTimesASecond) {
    const auto report = openOn(left, editor);
    manager->startShowing();
    const std::string number = std::to_string(report);
    EXPECT_EQ(linesWith("[Lumo] screen=7 select window=" + number +
                        " owner=Editor pid=" + std::to_string(editor) +
                        " z=2 bounds={{100, 300}, {800, 600}} local={{100, 180}, {800, 600}}"),
              1)
        << testing::PrintToString(desktop.logLines);
    EXPECT_EQ(linesWith("[Lumo][display 7] display-order stable ref=" + number), 1);
    EXPECT_EQ(linesWith("[Lumo][display 9] display-order stable ref=nil"), 1);
    EXPECT_EQ(linesWith("[Lumo][display "), 2);
    desktop.logLines.clear();

    desktop.advance(1);
    EXPECT_THAT(linesWith("[Lumo][display 7] snapshot==desired ref=" + number),
                testing::AllOf(testing::Ge(4), testing::Le(5)));
    EXPECT_EQ(linesWith("select window"), 0) << "the choice has not changed";
    const auto page = openOn(left, browser);
    for (int i = 0; i < 15; ++i) {
        tick();
        desktop.raise(i % 2 == 0 ? openOn(left, browser) : page);
    }
    EXPECT_EQ(clearOn(left), report) << "each tick wanted another window";
    EXPECT_EQ(linesWith("[Lumo][display 7] debounce start"), 1);
}

} // namespace
} // namespace lumo
