#include "ScriptedDesktop.h"
#include "presentation/CoverAppChoice.h"
#include "presentation/RuleList.h"
#include "presentation/SettingsTexts.h"
#include "presentation/StatusMenu.h"
#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PresentationTest : public testing::Test {
  protected:
    PresentationTest() {
        desktop.plugDisplay(1, {0, 0, 1920, 1080});
        StatusMenuActions actions;
        actions.onSelectCoverApp = [this](const auto &choice) { selected.push_back(choice); };
        menu = std::make_unique<StatusMenu>(desktop.platform(), settings, actions);
    }

    std::vector<std::string> offered() {
        std::vector<std::string> names;
        for (const auto &choice : coverAppChoices(desktop.platform(), settings)) {
            names.push_back(choice.displayName);
        }
        return names;
    }

    test::ScriptedDesktop desktop;
    SettingsStore settings{desktop.platform()};
    std::unique_ptr<StatusMenu> menu;
    std::vector<std::optional<CoverAppChoice>> selected;
};

TEST_F(PresentationTest, CoverLineWarnsOrHints) {
    using Notice = StatusMenu::CoverNotice;
    struct Case {
        bool isEnabled;
        std::string status;
        std::optional<std::string> hint;
        double lock;
        Notice notice;
        std::string text;
        std::string summary;
    };
    const std::vector<Case> cases{
        {true, "Cover active", {}, 0.35, Notice::none, "", "Cover active · 350ms lock"},
        {true, "Cover active", "Cover set: Editor", 0.2, Notice::info, "Cover set: Editor",
         "Cover active · 200ms lock · Cover set: Editor"},
        {true, "Editor unavailable", "Cover set: Editor", 0.5, Notice::warning,
         "Editor unavailable", "Editor unavailable · 500ms lock · Cover set: Editor"},
        {true, "FALLBACK", {}, 0.35, Notice::warning, "FALLBACK", "FALLBACK · 350ms lock"},
        {false, "No Cover App selected", "Cover cleared", 0.35, Notice::none, "", "Off"},
        {true,
         "Off",
         {},
         0.35,
         Notice::warning,
         "No Cover App selected",
         "No Cover App selected · 350ms lock"},
    };
    for (const auto &[isEnabled, status, hint, lock, notice, text, summary] : cases) {
        settings.privacyCoverEnabled.set(isEnabled);
        settings.privacyCoverRuntimeStatus.set(status);
        settings.privacyCoverRuntimeHint.set(hint);
        settings.coverWindowLockDuration.set(lock);
        EXPECT_EQ(menu->coverNotice(), notice) << summary;
        EXPECT_EQ(menu->coverNoticeText(), text);
        EXPECT_EQ(menu->privacyCoverSummary(), summary);
    }
}

TEST_F(PresentationTest, MenuPagesAndOneChangePerTurn) {
    int changes = 0;
    const auto observed = menu->onChange([&] { ++changes; });
    settings.isEnabled.set(true);
    settings.privacyCoverEnabled.set(true);
    EXPECT_EQ(changes, 0) << "a setting is not stored yet while it is announced";
    desktop.mainLoop.runPosted();
    EXPECT_EQ(changes, 1);

    desktop.openWindow(desktop.launch("Editor", "org.example.Editor"), {0, 0, 500, 400});
    menu->fixCover();
    EXPECT_EQ(menu->page(), StatusMenu::Page::coverApps);
    ASSERT_EQ(menu->runningApps().size(), 1U);
    menu->selectCoverApp(menu->runningApps().front());
    EXPECT_EQ(menu->page(), StatusMenu::Page::main);
    menu->chooseCoverApp();
    menu->selectCoverApp(std::nullopt);
    EXPECT_EQ(menu->page(), StatusMenu::Page::main);
    EXPECT_THAT(selected,
                ElementsAre(CoverAppChoice{"org.example.Editor", "org.example.Editor", "Editor"},
                            std::nullopt));
}

TEST_F(PresentationTest, CoverAppsOnceEachByName) {
    const auto open = [&](const char *name, std::optional<std::string> bundleID, Rect bounds,
                          int layer = 0) {
        desktop.openWindow(desktop.launch(name, std::move(bundleID)), bounds, {}, layer);
    };
    open("zebra", "org.example.zebra", {0, 0, 80, 80});
    open("Ant", "org.example.ant", {0, 0, 300, 300});
    open("Ant", "org.example.ant", {50, 0, 300, 300});
    open("bee", "org.example.bee", {0, 0, 300, 300});
    open("Narrow", "org.example.narrow", {0, 0, 79, 300});
    open("Panel", "org.example.panel", {0, 0, 300, 300}, 25);
    open("Nameless", std::nullopt, {0, 0, 300, 300});
    desktop.launch("Windowless", "org.example.windowless");
    EXPECT_THAT(offered(), ElementsAre("Ant", "bee", "zebra"));

    settings.privacyCoverBundleID.set("org.example.gone");
    EXPECT_THAT(offered(), ElementsAre("Ant", "bee", "org.example.gone", "zebra"));
    settings.privacyCoverDisplayName.set("Cat");
    EXPECT_THAT(offered(), ElementsAre("Ant", "bee", "Cat", "zebra"));
    EXPECT_EQ(selectedCoverAppName(desktop.platform(), settings, {}), "Cat");
    EXPECT_EQ(selectedCoverAppName(desktop.platform(), settings,
                                   {{"org.example.gone", "org.example.gone", "Gone"}}),
              "Gone");
    EXPECT_EQ(menu->setCoverSubtitle(), "Current: org.example.gone");

    // Where applications are referred to by name, and this program by nothing.
    desktop.vocabulary.appNaming = AppNaming::displayName;
    EXPECT_EQ(menu->setCoverSubtitle(), "Current: Cat");
    settings.privacyCoverDisplayName.set(std::nullopt);
    desktop.installed = {{"org.example.gone", "Gone Fishing"}};
    EXPECT_EQ(menu->setCoverSubtitle(), "Current: Gone Fishing");
    EXPECT_EQ(menu->chooseCoverSubtitle(), "Selected: Gone Fishing");
    desktop.openWindow(desktop.lumo(), {0, 0, 300, 300});
    EXPECT_THAT(offered(), ElementsAre("Ant", "bee", "Gone Fishing", "Lumo", "zebra"));
    desktop.capabilities.offersItself = false;
    menu->chooseCoverApp();
    EXPECT_THAT(offered(), ElementsAre("Ant", "bee", "Gone Fishing", "zebra"));
    desktop.answerWindowListWith(nullptr);
    EXPECT_THAT(offered(), ElementsAre("Gone Fishing"));
}

TEST_F(PresentationTest, RulesAreFoundAddedSwitchedAndRemoved) {
    settings.blacklist.set({});
    RuleList list(rulesInForce(settings));
    EXPECT_FALSE(list.add("  ", "Nothing"));
    EXPECT_TRUE(list.add(" org.example.Editor ", ""));
    EXPECT_TRUE(list.add("org.example.Terminal", "Términal"));
    EXPECT_TRUE(list.add("org.example.Editor", "Editor")) << "it has a rule already";
    ASSERT_EQ(settings.blacklist.value().size(), 2U);
    const auto editor = settings.blacklist.value().front().id;
    EXPECT_EQ(list.add("org.example.Editor", ""), editor);
    EXPECT_EQ(settings.blacklist.value().front().displayName, "org.example.Editor");
    EXPECT_EQ(list.matching(" example.term").size(), 1U);
    list.setEnabled(editor, false);
    list.add("org.example.Editor", "");
    EXPECT_TRUE(settings.blacklist.value().front().isEnabled) << "switched on again";

    desktop.launch("Editor", "org.example.Editor");
    desktop.launch("Browser", "org.example.Browser");
    desktop.installed = {{"org.example.Archiver", "archiver"}, {"org.example.Browser", "Browser"}};
    EXPECT_THAT(ruleCandidates(desktop.platform().workspace, settings.blacklist.value()),
                ElementsAre(InstalledApplication{"org.example.Archiver", "archiver"},
                            InstalledApplication{"org.example.Browser", "Browser"}));

    settings.useWhitelistMode.set(true);
    EXPECT_EQ(&rulesInForce(settings), &settings.whitelist);
}

TEST_F(PresentationTest, NumbersInWords) {
    EXPECT_EQ(percentText(0.85), "85%");
    EXPECT_EQ(percentText(0.005), "1%");
    EXPECT_EQ(percentText(1), "100%");
    EXPECT_EQ(secondsText(2), "2.0 s");
    EXPECT_EQ(secondsText(0.15), "0.15 s");
    EXPECT_EQ(secondsText(0.5), "0.5 s");
}

TEST_F(PresentationTest, ResetOfTheShortcutsAlone) {
    for (auto *setting : settings.settings()) {
        setting->setAgain();
    }
    settings.toggleShortcutKey.set(0);
    settings.peekShortcutModifiers.set(0x200);
    settings.coverSetShortcutEnabled.set(false);
    settings.shakeToggleModifier.set("Command");
    settings.shakeSensitivity.set(0.1);
    settings.mouseShakeToggleEnabled.set(false);
    settings.effectIntensity.set(0.9);
    resetShortcutsToDefaults(settings);
    std::vector<std::string_view> changed;
    for (const auto *setting : settings.settings()) {
        if (!setting->isDefault()) {
            changed.push_back(setting->key());
        }
    }
    EXPECT_THAT(changed, ElementsAre("effectIntensity"));
}

TEST(SettingsTexts, WhatTheDesktopLacks) {
    const Capabilities all{.liveBackdrop = true};
    const Capabilities none{.globalPointerMonitors = false};
    EXPECT_EQ(effectDescription(EffectMode::softBlur, all), description(EffectMode::softBlur));
    EXPECT_THAT(effectDescription(EffectMode::softBlur, none), testing::HasSubstr("can't blur"));
    EXPECT_EQ(effectDescription(EffectMode::dim, none), description(EffectMode::dim));
    EXPECT_NE(shakeNote(all), shakeNote(none));
}

} // namespace
} // namespace lumo
