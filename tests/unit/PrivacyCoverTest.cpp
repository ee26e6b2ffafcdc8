#include "OverlayStories.h"

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// The editor is the Cover App.
class PrivacyCover : public test::OverlayStories {
  protected:
    PrivacyCover() {
        settings.privacyCoverEnabled.set(true);
        settings.privacyCoverBundleID.set("org.example.Editor");
        settings.privacyCoverDisplayName.set("Editor");
        settings.privacyCoverBringForwardOnStart.set(false);
    }

    const std::string &status() const { return settings.privacyCoverRuntimeStatus.value(); }
};

TEST_F(PrivacyCover, WindowOfTheCoverAppStaysClear) {
    const auto report = openOn(left, editor);
    const auto page = openOn(left, browser);
    openOn(right, browser);
    manager->startShowing();
    desktop.focus(page);
    settle();
    EXPECT_EQ(clearOn(left), report);
    EXPECT_EQ(clearOn(right), std::nullopt) << "no cover window here: all of it is covered";

    settings.privacyCoverEnabled.set(false);
    settle();
    EXPECT_EQ(clearOn(left), page);
}

TEST_F(PrivacyCover, LockHoldsTheWindow) {
    const auto first = openOn(left, editor);
    manager->startShowing();
    const auto second = openOn(left, editor);
    settle();
    EXPECT_EQ(clearOn(left), first) << "raising another window of the Cover App changes nothing";

    desktop.moveWindow(first, {1600, 300, 800, 600});
    settle();
    EXPECT_EQ(clearOn(left), first) << "wherever it is now";

    manager->stopShowing();
    desktop.advance(0.2);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), first) << "the lock survives a stop";
    manager->stopShowing();
    desktop.advance(0.36);
    manager->startShowing();
    EXPECT_EQ(clearOn(left), second) << "but not longer than its time";

    settings.privacyCoverEnabled.set(false);
    tick();
    const auto third = openOn(left, editor);
    settings.privacyCoverEnabled.set(true);
    settle();
    EXPECT_EQ(clearOn(left), third) << "nor through a time without cover";

    desktop.closeWindow(second);
    desktop.closeWindow(third);
    settle();
    EXPECT_EQ(clearOn(left), std::nullopt);
    EXPECT_EQ(clearOn(right), first);
}

TEST_F(PrivacyCover, StatusInOneLine) {
    manager->startShowing();
    EXPECT_EQ(status(), "Editor unavailable");
    settings.privacyCoverDisplayName.set("");
    tick();
    EXPECT_EQ(status(), " unavailable");
    settings.privacyCoverDisplayName.set(std::nullopt);
    tick();
    EXPECT_EQ(status(), "org.example.Editor unavailable");
    openOn(right, editor);
    tick();
    EXPECT_EQ(status(), "Cover active");
    for (const auto &none : {std::optional<std::string>(), std::optional<std::string>("")}) {
        settings.privacyCoverBundleID.set(none);
        tick();
        EXPECT_EQ(status(), "No Cover App selected");
    }
    settings.privacyCoverEnabled.set(false);
    tick();
    EXPECT_EQ(status(), "Off");
    manager->stopShowing();
    settings.privacyCoverEnabled.set(true);
    manager->updateAllOverlays();
    EXPECT_EQ(status(), "Off") << "what is hidden has no state to tell";
}

TEST_F(PrivacyCover, BroughtForwardOnceAtStart) {
    settings.privacyCoverBringForwardOnStart.set(true);
    const auto back = openOn(left, editor);
    const auto front = openOn(left, editor);
    const auto page = openOn(left, browser);
    desktop.refusesToRaise = {front};
    manager->startShowing();
    EXPECT_THAT(desktop.activations(), IsEmpty()) << "only in the next turn";
    settle();
    desktop.advance(2);
    EXPECT_THAT(desktop.activations(), ElementsAre(editor));
    EXPECT_EQ(desktop.lastActivation, HiddenApplication::show);
    EXPECT_THAT(desktop.raiseAttempts, ElementsAre(front, back)) << "the first that succeeds";
    EXPECT_EQ(desktop.stack().back(), page);
}

TEST_F(PrivacyCover, BroughtForwardAtMostEvery450Milliseconds) {
    openOn(left, editor);
    settings.privacyCoverKeepAbove.set(true);
    desktop.accessibilityTrusted = false;
    manager->startShowing();
    desktop.advance(0.44);
    EXPECT_THAT(desktop.activations(), SizeIs(1));
    desktop.advance(0.03);
    EXPECT_THAT(desktop.activations(), SizeIs(2));
    desktop.advance(9);
    EXPECT_THAT(desktop.activations(), SizeIs(testing::AllOf(testing::Ge(20), testing::Le(22))));
    EXPECT_THAT(desktop.raiseAttempts, IsEmpty());
    EXPECT_EQ(desktop.lastActivation, HiddenApplication::leave);

    desktop.quit(editor);
    settings.privacyCoverBundleID.set("org.example.Gone");
    const auto before = desktop.activations().size();
    desktop.advance(2);
    EXPECT_THAT(desktop.activations(), SizeIs(before));
}

} // namespace
} // namespace lumo
