#include "app/AppController.h"

#include "ScriptedDesktop.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::IsEmpty;
using testing::Optional;

constexpr std::uint32_t commandOption = hotKeyModifier::command | hotKeyModifier::option;

class AppControllerTest : public testing::Test {
  protected:
    AppControllerTest() {
        desktop.plugDisplay(1, {0, 0, 1920, 1080});
        editor = desktop.launch("Editor", "org.example.Editor");
        editorWindow = desktop.openWindow(editor, {100, 100, 800, 600}, "Notes");
        desktop.focusApplication(editor);
    }

    void start() { controller = std::make_unique<AppController>(desktop.platform()); }

    void pressShortcut(std::uint32_t keyCode, std::uint32_t modifiers) {
        desktop.pressHotKey(keyCode, modifiers);
        desktop.releaseHotKey(keyCode, modifiers);
        desktop.mainLoop.runPosted();
    }
    void pressToggle() { pressShortcut(49, hotKeyModifier::control); }
    void pressPeek() { pressShortcut(48, commandOption); }
    void pressSetCover() { pressShortcut(8, commandOption); }

    std::string status() const { return controller->statusMessage.value(); }
    SettingsStore &settings() { return controller->settingsStore(); }

    ScriptedDesktop desktop;
    ScriptedDesktop::ProcessID editor = 0;
    ScriptedDesktop::WindowID editorWindow = 0;
    std::unique_ptr<AppController> controller;
};

TEST_F(AppControllerTest, TheToggleShortcutTurnsTheEffectOnAndOffAndIsRemembered) {
    start();
    EXPECT_EQ(status(), "Lumo (Off)");
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());

    pressToggle();
    EXPECT_EQ(status(), "Lumo (On)");
    EXPECT_TRUE(controller->isReady.value());
    EXPECT_EQ(desktop.openOverlays().size(), 1U);
    EXPECT_EQ(desktop.defaults.at("isEnabled"), Value(true));

    pressToggle();
    EXPECT_EQ(status(), "Lumo (Off)");
    EXPECT_FALSE(controller->isReady.value());
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    EXPECT_EQ(desktop.defaults.at("isEnabled"), Value(false));
}

TEST_F(AppControllerTest, AnEffectThatWasOnIsOnAgainAtTheNextStart) {
    desktop.defaults.emplace("isEnabled", Value(true));
    start();
    EXPECT_EQ(status(), "Lumo (On)");
    EXPECT_EQ(desktop.openOverlays().size(), 1U);
    controller.reset();
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    EXPECT_EQ(desktop.mainLoop.timerCount(), 0U);
}

TEST_F(AppControllerTest, PeekRevealsForItsFullDurationAndOutlivesTheSwitchOff) {
    start();
    pressPeek();
    EXPECT_EQ(status(), "Lumo (Off)");

    pressToggle();
    pressPeek();
    EXPECT_EQ(status(), "Lumo (Peek)");
    EXPECT_EQ(desktop.overlayOn(1).alpha, 0);
    desktop.advance(1.5);
    pressPeek(); // starts the two seconds anew
    desktop.advance(1.9);
    EXPECT_EQ(desktop.overlayOn(1).alpha, 0) << "ticks must not end a peek";
    desktop.advance(0.2);
    EXPECT_EQ(desktop.overlayOn(1).alpha, 1);
    EXPECT_EQ(status(), "Lumo (On)");

    pressPeek();
    pressToggle();
    EXPECT_EQ(status(), "Lumo (Peek)");
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    desktop.advance(2.1);
    EXPECT_EQ(status(), "Lumo (Off)");
}

TEST_F(AppControllerTest, TheCoverIsAssignedAndItsHintsComeAndGo) {
    desktop.defaults.emplace("privacyCoverEnabled", Value(true));
    start();
    pressToggle();
    EXPECT_THAT(settings().privacyCoverBundleID.value(),
                Optional(std::string("org.example.Editor")));
    EXPECT_THAT(settings().privacyCoverRuntimeHint.value(),
                Optional(std::string("Auto-set Cover: Editor")));
    desktop.advance(3);
    pressSetCover();
    EXPECT_THAT(settings().privacyCoverRuntimeHint.value(),
                Optional(std::string("Cover set: Editor")));
    desktop.advance(1.4);
    pressSetCover(); // the same hint within 1.5 s does not start its time anew
    desktop.advance(2.5);
    EXPECT_NE(settings().privacyCoverRuntimeHint.value(), std::nullopt);
    desktop.advance(0.2);
    EXPECT_EQ(settings().privacyCoverRuntimeHint.value(), std::nullopt);

    controller->setPrivacyCoverApp({}, {}, true);
    EXPECT_EQ(settings().privacyCoverBundleID.value(), std::nullopt);
    EXPECT_FALSE(settings().privacyCoverAutoAssignOnEnable.value());
    EXPECT_THAT(settings().privacyCoverRuntimeHint.value(), Optional(std::string("Cover cleared")));

    desktop.focusApplication({});
    settings().privacyCoverEnabled.set(false);
    pressSetCover(); // without a candidate the cover is switched on all the same
    EXPECT_EQ(settings().privacyCoverBundleID.value(), std::nullopt);
    EXPECT_TRUE(settings().privacyCoverEnabled.value());
}

TEST_F(AppControllerTest, BehindItsOwnWindowTheFirstUsableWindowNamesTheCandidate) {
    const auto small = desktop.launch("Small", "org.example.Small");
    const auto panel = desktop.launch("Panel", "org.example.Panel");
    const auto unknown = desktop.launch("Unknown", {});
    desktop.openWindow(small, {0, 0, 39, 400});
    desktop.openWindow(panel, {0, 0, 500, 500}, {}, 25);
    desktop.openWindow(desktop.lumo(), {0, 0, 500, 500}, "Lumo Settings");
    start();
    desktop.focusApplication(desktop.lumo());
    EXPECT_THAT(controller->setPrivacyCoverAppFromFrontmost(false),
                Optional(std::string("Editor")));

    desktop.openWindow(unknown, {0, 0, 40, 40});
    EXPECT_EQ(controller->setPrivacyCoverAppFromFrontmost(false), std::nullopt);
    desktop.answerWindowListWith(nullptr);
    EXPECT_EQ(controller->setPrivacyCoverAppFromFrontmost(false), std::nullopt);
}

} // namespace
} // namespace lumo
