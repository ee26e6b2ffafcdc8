#include "ScriptedDesktop.h"
#include "support/NotificationCenter.h"
#include "windows/PermissionManager.h"
#include "windows/WindowFocusTracker.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class WindowFocusTrackerTest : public testing::Test {
  protected:
    WindowFocusTrackerTest()
        : sent(tracker->focusSubject.subscribe([this](const FocusChangeEvent &event) {
            log.push_back(describe(event) + " at " +
                          std::to_string(std::lround((desktop.mainLoop.now() - 1000) * 1000)));
        }))
        , delivered(tracker->currentFocus.subscribeToChanges(
              [this](const auto &event) { deliveries.push_back(describe(*event)); })) {
        tracker->throttleInterval = 0;
        tracker->isTracking.set(true);
    }

    static std::string describe(const FocusChangeEvent &event) {
        return event.frontendAppName + ":" + event.windowTitle.value_or(event.windowID ? "?" : "-");
    }

    ScriptedDesktop desktop;
    std::unique_ptr<WindowFocusTracker> tracker =
        std::make_unique<WindowFocusTracker>(desktop.platform());
    ScriptedDesktop::ProcessID editor = desktop.launch("Editor", "org.example.Editor");
    ScriptedDesktop::WindowID notes = desktop.openWindow(editor, {0, 0, 800, 600}, "Notes");
    ScriptedDesktop::WindowID plain = desktop.openWindow(editor, {0, 0, 800, 600});
    ScriptedDesktop::ProcessID player = desktop.launch("Player", {});
    std::vector<std::string> log;
    std::vector<std::string> deliveries;
    Handle sent;
    Subscription delivered;
};

TEST_F(WindowFocusTrackerTest, OneEventForEachRealChange) {
    desktop.focus(notes);
    desktop.advance(0.03);
    desktop.focusApplication(editor); // looked at on its own, and nothing is new
    desktop.advance(0.03);
    EXPECT_THAT(log, ElementsAre("Editor:Notes at 50"));
    desktop.retitle(notes, "Notes 2");
    desktop.announceFocusedWindow();
    desktop.advance(0.1);
    EXPECT_THAT(log, SizeIs(1)) << "another title is no change of focus";

    log.clear();
    desktop.raise(plain);
    desktop.announceFocusedWindow();
    desktop.advance(0.1);
    desktop.focusApplication(player);
    desktop.advance(0.1);
    desktop.focusApplication(player);
    desktop.advance(0.1);
    EXPECT_THAT(log, ElementsAre("Editor:? at 210", "Player:- at 310"));
    desktop.focusApplication({});
    desktop.advance(0.1);
    EXPECT_THAT(log, SizeIs(2));

    tracker->isTracking.set(false);
    desktop.focus(notes);
    desktop.advance(0.1);
    EXPECT_THAT(log, SizeIs(2));
    EXPECT_EQ(tracker->currentFocus.value()->frontendPID, player);

    desktop.focus(plain);
    tracker.reset();
    desktop.advance(0.1); // its runs end with it
}

TEST_F(WindowFocusTrackerTest, ThrottleDeliversTheNewest) {
    tracker->throttleInterval = 1;
    desktop.focus(notes);
    desktop.advance(0.1);
    desktop.focusApplication(player);
    desktop.advance(0.1);
    desktop.focusApplication(player);
    desktop.advance(0.1);
    desktop.focusApplication(editor);
    desktop.advance(0.1);
    desktop.focus(plain);
    desktop.advance(0.1);
    EXPECT_THAT(log, ElementsAre("Editor:Notes at 50", "Player:- at 150", "Editor:Notes at 350",
                                 "Editor:? at 450"))
        << "the stream itself is not throttled, and sends nothing twice";
    EXPECT_THAT(deliveries, ElementsAre("Editor:Notes"));
    desktop.advance(0.54);
    EXPECT_THAT(deliveries, SizeIs(1));
    desktop.advance(0.02);
    EXPECT_THAT(deliveries, ElementsAre("Editor:Notes", "Editor:?"));
    desktop.advance(2);
    desktop.focusApplication(player);
    desktop.advance(0.06);
    EXPECT_THAT(deliveries, SizeIs(3)) << "at once after a quiet time";
}

} // namespace
} // namespace lumo
