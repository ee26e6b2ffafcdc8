#include "ScriptedDesktop.h"
#include "ScriptedInterface.h"
#include "app/AppDelegate.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace lumo {
namespace {

using test::ScriptedInterface;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ShellTest : public testing::Test {
  protected:
    ShellTest() {
        desktop.plugDisplay(1, {0, 0, 1920, 1080});
        editor = desktop.launch("Editor", "org.example.Editor");
        desktop.openWindow(editor, {100, 100, 800, 600}, "Notes");
        desktop.focusApplication(editor);
    }

    void launch(bool hasCompletedOnboarding = true) {
        if (hasCompletedOnboarding) {
            desktop.defaults.insert_or_assign("hasCompletedOnboarding", Value(true));
        }
        delegate = std::make_unique<AppDelegate>(desktop.platform(), interface);
        delegate->applicationDidFinishLaunching();
        desktop.mainLoop.runPosted();
    }

    const StatusMenuActions &rows() { return interface.menu->actions(); }
    SettingsStore &settings() { return delegate->appController()->settingsStore(); }
    double dotBrightness() const { return desktop.statusTitle.color.red; }

    test::ScriptedDesktop desktop;
    ScriptedInterface interface;
    test::ScriptedDesktop::ProcessID editor = 0;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(ShellTest, FirstStartBeginsWithTheGuidance) {
    desktop.defaults.insert_or_assign("isEnabled", Value(true));
    launch(false);
    EXPECT_EQ(desktop.activationPolicy, ActivationPolicy::accessory);
    ASSERT_TRUE(interface.guidanceWindow);
    EXPECT_EQ(interface.guidanceWindow->timesBroughtToFront, 1);
    ScriptedInterface::close(interface.guidanceWindow);
    EXPECT_EQ(desktop.defaults.at("hasCompletedOnboarding"), Value(true));
    EXPECT_TRUE(delegate->appController()->isReady.value());

    delegate.reset();
    EXPECT_THAT(desktop.openOverlays(), IsEmpty());
    launch();
    EXPECT_FALSE(interface.guidanceWindow);
}

// What follows the page is told once: by the effect itself, or in words where the desktop has some.
TEST_F(ShellTest, FirstStartEndsInTheEffectOrAHint) {
    desktop.vocabulary.firstStart.readyTitle = "Ready";
    desktop.vocabulary.firstStart.readyText = "Press {toggle}.";
    launch(false);
    interface.guidanceWindow->begin();
    EXPECT_TRUE(settings().isEnabled.value());
    EXPECT_EQ(desktop.defaults.at("hasCompletedOnboarding"), Value(true));
    EXPECT_EQ(interface.guidanceWindow.use_count(), 1) << "closed";
    EXPECT_THAT(desktop.notifications, IsEmpty());

    desktop.defaults.clear();
    launch(false);
    ScriptedInterface::close(interface.guidanceWindow);
    EXPECT_FALSE(settings().isEnabled.value());
    ASSERT_EQ(desktop.notifications.size(), 1U);
    EXPECT_EQ(desktop.notifications.front().body, "Press ⌃Space.");
    delegate->showGuidanceWindow();
    ScriptedInterface::close(interface.guidanceWindow);
    EXPECT_EQ(desktop.notifications.size(), 1U) << "the first time only";
}

TEST_F(ShellTest, NothingStartsWithoutThePermission) {
    desktop.accessibilityTrusted = false;
    launch(false);
    ScriptedInterface::close(interface.guidanceWindow);
    EXPECT_THAT(desktop.defaults, testing::Not(Contains(testing::Key("hasCompletedOnboarding"))));

    launch();
    ASSERT_TRUE(interface.guidanceWindow) << "revoked since";
    desktop.changeAccessibilityTrust(true);
    desktop.mainLoop.runPosted();
    delegate->appController()->setLumoEnabled(true);
    EXPECT_TRUE(delegate->appController()->isReady.value());
}

TEST_F(ShellTest, GuidanceWaitsForAPermissionThatComesByItself) {
    desktop.capabilities.permissionComesByItself = true;
    desktop.defaults.insert_or_assign("isEnabled", Value(true));
    for (const double delay : {2.0, 20.0}) {
        desktop.accessibilityTrusted = false;
        launch();
        desktop.advance(delay);
        EXPECT_EQ(interface.guidanceWindow != nullptr, delay > 10);
        desktop.changeAccessibilityTrust(true);
        desktop.advance(20);
        EXPECT_LE(interface.guidanceWindow.use_count(), 1) << "closed by itself, or never shown";
        EXPECT_TRUE(delegate->appController()->isReady.value());
    }
    launch(false);
    EXPECT_EQ(interface.guidanceWindow->timesBroughtToFront, 1);
}

TEST_F(ShellTest, StatusItemShowsTheState) {
    launch();
    EXPECT_EQ(desktop.statusTitle.text, "●");
    EXPECT_EQ(desktop.statusTitle.pointSize, 15);
    EXPECT_EQ(desktop.statusToolTip, "Lumo - Focus and privacy");
    EXPECT_EQ(dotBrightness(), 1);
    rows().onToggle();
    EXPECT_EQ(dotBrightness(), 0.28);
    desktop.pressHotKey(49, hotKeyModifier::control);
    desktop.mainLoop.runPosted();
    EXPECT_EQ(dotBrightness(), 1);
}

TEST_F(ShellTest, ClicksAndRowsOpenAndCloseThePopover) {
    launch();
    desktop.rightClickStatusItem();
    EXPECT_TRUE(interface.isPopoverShown);
    desktop.rightClickStatusItem();
    EXPECT_FALSE(interface.isPopoverShown);

    desktop.rightClickStatusItem();
    rows().onSelectCoverApp(CoverAppChoice{"org.example.Mail", "org.example.Mail", "Mail"});
    EXPECT_TRUE(interface.isPopoverShown) << "choosing leaves it open";
    EXPECT_TRUE(settings().privacyCoverEnabled.value());
    settings().privacyCoverEnabled.set(false);
    rows().onSelectCoverApp(std::nullopt);
    EXPECT_FALSE(settings().privacyCoverEnabled.value());

    rows().onSetCoverFromFrontmost();
    EXPECT_FALSE(interface.isPopoverShown);
    EXPECT_EQ(settings().privacyCoverBundleID.value(), "org.example.Editor");
    EXPECT_TRUE(settings().privacyCoverEnabled.value());

    rows().onToggle();
    desktop.rightClickStatusItem();
    rows().onPeek();
    EXPECT_FALSE(interface.isPopoverShown);
    EXPECT_TRUE(settings().isPeeking.value());

    desktop.rightClickStatusItem();
    rows().onQuit();
    EXPECT_FALSE(interface.isPopoverShown);
    EXPECT_TRUE(desktop.isTerminated);
}

TEST_F(ShellTest, SettingsOpenOnTheirPage) {
    launch();
    desktop.rightClickStatusItem();
    rows().onShortcuts();
    EXPECT_FALSE(interface.isPopoverShown);
    EXPECT_FALSE(interface.settingsWindow) << "only after the popover is gone";
    desktop.mainLoop.runPosted();
    ASSERT_TRUE(interface.settingsWindow);
    EXPECT_EQ(delegate->appController()->selectedSettingsTab.value(), SettingsTab::shortcuts);
    rows().onPrivacyCover();
    desktop.mainLoop.runPosted();
    EXPECT_EQ(delegate->appController()->selectedSettingsTab.value(), SettingsTab::rules);
    desktop.startLumoAgain();
    EXPECT_EQ(interface.settingsWindowsMade, 1);
    EXPECT_EQ(interface.settingsWindow->timesBroughtToFront, 3);
    EXPECT_EQ(desktop.activationsOfLumo, 3);

    ScriptedInterface::close(interface.settingsWindow);
    desktop.startLumoAgain();
    EXPECT_EQ(interface.settingsWindowsMade, 2);
}

TEST_F(ShellTest, RequestsOfOtherPrograms) {
    using enum RemoteAction;
    desktop.installed = {{"org.example.Mail", "Mail"}};
    launch();
    const auto request = [&](RemoteAction action, std::optional<std::string> application = {},
                             bool hasStartedProgram = false) {
        const auto refusal = desktop.request({action, std::move(application), hasStartedProgram});
        desktop.mainLoop.runPosted();
        return refusal.value_or("");
    };
    EXPECT_EQ(request(activate, {}, true), "");
    EXPECT_FALSE(interface.settingsWindow) << "it was started, and nothing else was asked for";
    EXPECT_EQ(request(activate), "");
    EXPECT_TRUE(interface.settingsWindow);
    EXPECT_EQ(request(RemoteAction::openSettings), "");
    EXPECT_EQ(interface.settingsWindow->timesBroughtToFront, 2);

    EXPECT_EQ(request(peek), "Lumo is off");
    for (const auto &[action, isStart, isOn] : {std::tuple{toggle, false, true},
                                                {toggle, true, true},
                                                {toggle, false, false},
                                                {turnOn, false, true},
                                                {turnOn, false, true},
                                                {turnOff, false, false},
                                                {toggle, true, true},
                                                {emergencyStop, false, false},
                                                {turnOn, false, true}}) {
        EXPECT_EQ(request(action, {}, isStart), "");
        EXPECT_EQ(desktop.openOverlays().size(), isOn ? 1U : 0U) << static_cast<int>(action);
    }
    EXPECT_EQ(desktop.notifications.size(), 1U);
    EXPECT_EQ(request(peek), "");
    EXPECT_TRUE(settings().isPeeking.value());

    EXPECT_EQ(request(setCover, "org.example.None"), "There is no application org.example.None");
    EXPECT_FALSE(settings().privacyCoverEnabled.value());
    EXPECT_EQ(request(setCover), "");
    EXPECT_TRUE(settings().privacyCoverEnabled.value());
    for (const auto &[identifier, name] : std::map<std::string, std::string>{
             {"org.example.Editor", "Editor"}, {"org.example.Mail", "Mail"}}) {
        EXPECT_EQ(request(setCover, identifier), "");
        EXPECT_EQ(settings().privacyCoverBundleID.value(), identifier);
        EXPECT_EQ(settings().privacyCoverDisplayName.value(), name);
    }
    EXPECT_EQ(request(setCover, ""), "");
    EXPECT_EQ(settings().privacyCoverBundleID.value(), std::nullopt);
    desktop.focusApplication({});
    EXPECT_EQ(request(setCover), "No application is in front");

    EXPECT_EQ(request(quit), "");
    EXPECT_TRUE(desktop.isTerminated);
}

TEST_F(ShellTest, LoginItemFollowsItsSetting) {
    desktop.defaults.insert_or_assign("launchAtLogin", Value(true));
    launch();
    auto &login = delegate->appController()->launchAtLoginManager();
    EXPECT_TRUE(desktop.isLoginItem);
    EXPECT_TRUE(login.isEnabled.value());
    desktop.loginItemError = "no space left";
    settings().launchAtLogin.set(false);
    EXPECT_TRUE(login.isEnabled.value());
    EXPECT_THAT(desktop.logLines,
                Contains("Failed to unregister for launch at login: no space left"));
    desktop.loginItemError.reset();
    settings().launchAtLogin.set(false);
    EXPECT_FALSE(desktop.isLoginItem);
    desktop.loginItemError = "read-only";
    settings().launchAtLogin.set(true);
    EXPECT_FALSE(login.isEnabled.value());
    EXPECT_THAT(desktop.logLines, Contains("Failed to register for launch at login: read-only"));
    desktop.mainLoop.runPosted();
    EXPECT_FALSE(settings().launchAtLogin.value()) << "the user sees what is so";
    EXPECT_EQ(login.refusal.value(), "read-only");
}

// The words of the Mac that stand on no page, or change there: each is said by itself.
TEST_F(ShellTest, EveryTextOfTheMacIsSaid) {
    desktop.defaults = {{"privacyCoverEnabled", Value(true)},
                        {"effectMode", Value(std::string("dim"))},
                        {"toggleShortcutKey", Value(std::int64_t{48})},
                        {"toggleShortcutModifiers", Value(std::int64_t{3072})}};
    desktop.keyCodesTakenByOthers = {8};
    launch();
    std::vector<std::string> said{desktop.statusToolTip};
    auto &controller = *delegate->appController();
    auto &menu = *interface.menu;
    const auto listen = [&] {
        for (const auto &text :
             {controller.statusMessage.value(), menu.header(), menu.toggleTitle(),
              menu.privacyCoverSummary(), menu.setCoverSubtitle(), menu.chooseCoverSubtitle(),
              menu.coverNoticeText(), menu.shortcutSummary(),
              settings().privacyCoverRuntimeStatus.value(),
              settings().privacyCoverRuntimeHint.value().value_or("")}) {
            said.push_back(text);
        }
    };
    const std::vector<std::function<void()>> steps = {
        [] {},
        [&] { controller.setLumoEnabled(true); },
        [&] { controller.enterPeekMode(); },
        [&] { controller.exitPeekMode(); },
        [&] { controller.setPrivacyCoverApp("org.example.Mail", "Mail", true); },
        [&] { controller.setPrivacyCoverApp({}, {}, true); },
        [&] { settings().privacyCoverEnabled.set(false); },
        [&] {
            desktop.pressKey(2,
                             modifierFlag::control | modifierFlag::option | modifierFlag::command);
        }};
    for (const auto &step : steps) {
        step();
        desktop.advance(0.5);
        listen();
    }
    for (const auto &notification : desktop.notifications) {
        said.insert(said.end(), {notification.title, notification.body});
    }
    said.insert(said.end(), desktop.logLines.begin(), desktop.logLines.end());
    for (const auto *text : {"Lumo - Focus and privacy",
                             "Lumo (Off)",
                             "Lumo (On)",
                             "Lumo (Peek)",
                             "Lumo is Off",
                             "Lumo is On",
                             "Turn Lumo On",
                             "Turn Lumo Off",
                             "Auto-set Cover: Editor",
                             "Cover active · 350ms lock · Auto-set Cover: Editor",
                             "Cover active",
                             "Current: org.example.Editor",
                             "Selected: Editor",
                             "Cover set: Mail",
                             "Mail unavailable",
                             "Mail unavailable · 350ms lock · Cover set: Mail",
                             "Cover cleared",
                             "No Cover App selected",
                             "Enable Privacy Cover with current app",
                             "Pick from running apps",
                             "Off",
                             "Toggle ⌘⌥Tab, Peek(temp) ⌘⌥Tab",
                             "Lumo Emergency Stop",
                             "Lumo effects have been safely turned off.",
                             "[Lumo] Toggle hotkey skipped due to conflict: 48-3072",
                             "[Lumo] Cover hotkey register failed, status=-9878"}) {
        EXPECT_THAT(said, Contains(text));
    }
}

TEST_F(ShellTest, ResultOfACheckForUpdatesIsShown) {
    launch();
    EXPECT_TRUE(desktop.isUpdaterStarted);
    desktop.updateResult = {UpdateResult::Kind::newerVersion, "1.4"};
    rows().onCheckForUpdates();
    EXPECT_THAT(interface.messages, IsEmpty());
    desktop.mainLoop.runPosted();
    EXPECT_THAT(interface.messages, ElementsAre(testing::HasSubstr("1.4")));
}

} // namespace
} // namespace lumo
