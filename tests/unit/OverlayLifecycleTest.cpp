#include "OverlayStories.h"

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class OverlayLifecycle : public test::OverlayStories {};

TEST_F(OverlayLifecycle, OneOverlayPerDisplayWhileShowing) {
    std::vector<bool> received;
    const auto subscription =
        manager->subscribeToIsShowing([&](bool showing) { received.push_back(showing); });
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    manager->stopShowing();

    manager->startShowing();
    manager->startShowing();
    EXPECT_THAT(desktop.openOverlays(), SizeIs(2));
    EXPECT_EQ(desktop.mainLoop.timerCount(), 1U);
    EXPECT_EQ(desktop.overlayOn(left).frame, (Rect{0, 0, 1440, 900}));
    EXPECT_EQ(shownOn(right).bounds, (Rect{0, 0, 1920, 1080}));

    manager->stopShowing();
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    EXPECT_THAT(desktop.stack(), IsEmpty());
    EXPECT_EQ(desktop.mainLoop.timerCount(), 0U);
    desktop.focusApplication(editor);
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());

    manager->startShowing();
    EXPECT_THAT(desktop.openOverlays(), SizeIs(2));
    EXPECT_THAT(received, ElementsAre(false, true, false, true));
}

TEST_F(OverlayLifecycle, DisplaysComeAndGo) {
    manager->startShowing();
    const auto leftOverlay = desktop.overlayOn(left).number;

    desktop.unplugDisplay(right);
    EXPECT_THAT(desktop.openOverlays(), SizeIs(1));
    EXPECT_EQ(desktop.overlayOn(left).number, leftOverlay);

    // The timer notices also what no notification tells.
    desktop.setScreensSilently({{left, {0, 0, 1440, 900}, 1}, {12, {0, 900, 1024, 768}, 2}});
    tick();
    EXPECT_THAT(desktop.openOverlays(), SizeIs(2));
    EXPECT_EQ(desktop.overlayOn(left).number, leftOverlay);
    EXPECT_TRUE(desktop.overlayOn(12).orderedIn);

    desktop.setScreensSilently({});
    tick();
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    desktop.plugDisplay(left, {0, 0, 1440, 900});
    EXPECT_THAT(desktop.openOverlays(), SizeIs(1));
}

TEST_F(OverlayLifecycle, ResizedDisplayIsDrawnAfresh) {
    const auto first = openOn(left, editor);
    const auto second = openOn(left, browser);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), second);
    const auto overlay = desktop.overlayOn(left).number;

    desktop.raise(first);
    tick();
    EXPECT_EQ(clearOn(left), second) << "the change of the clear window is still debounced";
    desktop.setScreensSilently({{left, {0, 0, 1440, 900.5}, 2}, {right, {1440, 0, 1920, 1080}, 1}});
    tick();
    EXPECT_EQ(desktop.overlayOn(left).number, overlay);
    EXPECT_EQ(shownOn(left).bounds, (Rect{0, 0, 1440, 900.5}));
    EXPECT_EQ(clearOn(left), first) << "what was held is forgotten with the old size";
}

TEST_F(OverlayLifecycle, DisplayPluggedInDuringAPeek) {
    manager->startShowing();
    manager->peek();
    settle();
    EXPECT_EQ(desktop.overlayOn(right).alpha, 0);
    desktop.plugDisplay(12, {0, 900, 1024, 768});
    EXPECT_EQ(desktop.overlayOn(12).alpha, 1);
    manager->endPeek();
    EXPECT_EQ(desktop.overlayOn(left).alpha, 1);
    EXPECT_EQ(desktop.overlayOn(12).alpha, 1);
}

// Observers of what an update publishes run in its middle.
TEST_F(OverlayLifecycle, StoppedOrDestroyedWithinItsOwnTick) {
    settings.privacyCoverEnabled.set(true);
    settings.privacyCoverBundleID.set("org.example.Editor");
    settings.privacyCoverKeepAbove.set(true);
    settings.privacyCoverBringForwardOnStart.set(false);
    const auto onNextStatus = [this](std::function<void()> action) {
        return settings.privacyCoverRuntimeStatus.subscribeToChanges(
            [action = std::move(action)](const std::string &) { action(); });
    };

    manager->startShowing();
    auto subscription = onNextStatus([this] { manager->stopShowing(); });
    tick();
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    EXPECT_EQ(desktop.mainLoop.timerCount(), 0U);
    subscription.reset();

    for (const bool byTimer : {true, false}) {
        manager->startShowing();
        const auto activations = desktop.activations().size();
        subscription = onNextStatus([this] { manager.reset(); });
        if (byTimer) {
            tick();
        } else {
            desktop.switchSpace();
        }
        EXPECT_THAT(desktop.openOverlays(), IsEmpty());
        EXPECT_EQ(desktop.mainLoop.timerCount(), 0U);
        EXPECT_EQ(desktop.activations().size(), activations);
        subscription.reset();
        manager = std::make_unique<OverlayManager>(desktop.platform(), settings);
    }
}

TEST_F(OverlayLifecycle, DeferredWorkIsDroppedWithItsOwner) {
    settings.privacyCoverEnabled.set(true);
    settings.privacyCoverBundleID.set("org.example.Editor");
    manager->startShowing();
    manager.reset();
    desktop.mainLoop.runBackgroundTasks();
    settle();
    desktop.switchSpace();
    EXPECT_THAT(desktop.activations(), IsEmpty());
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
}

using OverlayLifecycleDeathTest = OverlayLifecycle;

TEST_F(OverlayLifecycleDeathTest, BrokenInvariantsAreNamed) {
    desktop.nextOverlayNumber = 4294967296;
    EXPECT_DEATH(manager->startShowing(), HasSubstr("32 bits"));
    desktop.nextOverlayNumber = -1;
    EXPECT_DEATH(manager->startShowing(), HasSubstr("32 bits"));
    desktop.nextOverlayNumber.reset();
    desktop.plugDisplay(0, {0, 2000, 800, 600});
    manager->startShowing();
    EXPECT_THAT(desktop.openOverlays(), SizeIs(3)) << "one display without a number is fine";
    EXPECT_DEATH(desktop.plugDisplay(0, {0, 3000, 800, 600}),
                 HasSubstr("Duplicate values for key: '0'"));
}

} // namespace
} // namespace lumo
