#include "InterfaceStage.h"
#include "Looking.h"
#include "platform/EventMonitors.h"
#include "settings/CoverLockPreset.h"
#include "ui/AppChooserView.h"
#include "ui/Picker.h"
#include "ui/SearchField.h"
#include "ui/SettingsView.h"
#include "ui/Switch.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSlider>
#include <QTest>
#include <memory>

namespace lumo {
namespace {

using test::control;
using test::readTexts;
using testing::ElementsAre;

class SettingsWindowTest : public testing::Test {
  protected:
    QWidget &open(SettingsTab tab) {
        stage.selectedTab.set(tab);
        if (!view) {
            view = std::make_unique<SettingsView>(stage.settingsModel());
            test::layOut(*view);
        }
        return page();
    }
    // The page that is shown.
    QWidget &page() {
        settle();
        for (auto *area : view->findChildren<QScrollArea *>()) {
            if (area->isVisibleTo(view.get())) {
                return *area;
            }
        }
        throw std::runtime_error("no page is shown");
    }
    void settle() {
        stage.desktop.mainLoop.runPosted();
        QApplication::processEvents();
    }
    std::vector<std::string> shownRules() {
        settle();
        std::vector<std::string> names;
        const auto *model = control<QListView>(*view, "App rules").model();
        for (int row = 0; row < model->rowCount(); ++row) {
            names.push_back(model->index(row, 0).data().toString().toStdString());
        }
        return names;
    }
    // Clicks into the row, this far from its right edge, so soon after each other that two are a
    // double click.
    void clickRule(int row, int fromRight, bool twice = false) {
        auto &list = control<QListView>(*view, "App rules");
        const auto area = list.visualRect(list.model()->index(row, 0));
        const QPoint at(area.right() - fromRight, area.center().y());
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, at);
        if (twice) {
            settle();
            QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, at);
            QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, at);
        }
        settle();
    }

    test::InterfaceStage stage;
    SettingsStore &settings = stage.settings;
    std::unique_ptr<SettingsView> view;
};

TEST_F(SettingsWindowTest, SwitchesWriteTheirSettingAndFollowIt) {
    struct Case {
        SettingsTab tab;
        const char *name;
        Setting<bool> &setting;
    };
    for (const auto &[tab, name, setting] : {
             Case{SettingsTab::general, "Launch at login", settings.launchAtLogin},
             Case{SettingsTab::general, "Pause in fullscreen apps", settings.pauseInFullscreen},
             Case{SettingsTab::appearance, "Blur-free Mode", settings.blurFreeMode},
             Case{SettingsTab::rules, "Use Privacy Cover", settings.privacyCoverEnabled},
             Case{SettingsTab::rules, "Bring Cover App forward when turning Lumo on",
                  settings.privacyCoverBringForwardOnStart},
             Case{SettingsTab::rules, "Keep trying to keep Cover App on top",
                  settings.privacyCoverKeepAbove},
             Case{SettingsTab::rules,
                  "Auto-assign frontmost app if Cover App is empty when turning Lumo on",
                  settings.privacyCoverAutoAssignOnEnable},
             Case{SettingsTab::shortcuts, "Enable Toggle Shortcut", settings.toggleShortcutEnabled},
             Case{SettingsTab::shortcuts, "Enable Peek Shortcut", settings.peekShortcutEnabled},
             Case{SettingsTab::shortcuts, "Enable Set Cover Shortcut",
                  settings.coverSetShortcutEnabled},
             Case{SettingsTab::shortcuts, "Toggle Lumo with 4 quick mouse swipes",
                  settings.mouseShakeToggleEnabled},
             Case{SettingsTab::shortcuts, "Shake Action: Toggle",
                  settings.shakeToggleActionEnabled},
             Case{SettingsTab::shortcuts, "Shake Action: Peek", settings.shakeToReveal},
         }) {
        auto &box = control<Switch>(open(tab), name);
        const bool before = setting.value();
        EXPECT_EQ(box.isChecked(), before) << name;
        QTest::keyClick(&box, Qt::Key_Return);
        EXPECT_EQ(setting.value(), !before) << name;
        // A click on the title beside it.
        QTest::mouseClick(box.parentWidget(), Qt::LeftButton, {}, {30, 12});
        EXPECT_EQ(setting.value(), box.isChecked()) << name;
        setting.set(!before);
        EXPECT_EQ(box.isChecked(), !before) << name;
    }
}

TEST_F(SettingsWindowTest, ShortcutsOfAnotherProgramSaySo) {
    const auto notes = [this] {
        const auto texts = readTexts(open(SettingsTab::shortcuts));
        return std::ranges::count_if(texts, [](const std::string &text) {
            return text.ends_with("In use by another program.");
        });
    };
    stage.desktop.keyCodesTakenByOthers = {48, 49};
    stage.shortcuts.registerHotKeys();
    stage.shortcuts.isListening.set(true);
    EXPECT_EQ(notes(), 2);
    stage.desktop.keyCodesTakenByOthers = {48};
    open(SettingsTab::general);
    EXPECT_EQ(notes(), 1) << "tried again";
    stage.desktop.releaseKeysOfOthers();
    EXPECT_EQ(notes(), 0);
}

TEST_F(SettingsWindowTest, SlidersMoveInStepsAndTellStrayValues) {
    struct Case {
        SettingsTab tab;
        const char *name;
        Setting<double> &setting;
        double afterStep;
        double last;
        const char *stray; // 0.333
    };
    for (const auto &[tab, name, setting, afterStep, last, stray] :
         {Case{SettingsTab::general, "Peek Duration", settings.peekDuration, 2.5, 5, "0.33 s"},
          Case{SettingsTab::appearance, "Intensity", settings.effectIntensity, 0.65, 1, "33%"},
          Case{SettingsTab::appearance, "Transition Speed", settings.transitionSpeed, 0.2, 1,
               "0.33 s"},
          Case{SettingsTab::shortcuts, "Shake Sensitivity", settings.shakeSensitivity, 0.86, 1,
               "33%"}}) {
        auto &slider = control<QSlider>(open(tab), name);
        QTest::keyClick(&slider, Qt::Key_Right);
        EXPECT_NEAR(setting.value(), afterStep, 1e-9) << name;
        QTest::keyClick(&slider, Qt::Key_End);
        EXPECT_EQ(setting.value(), last) << name;
        setting.set(0.333);
        EXPECT_EQ(setting.value(), 0.333) << name << ": looking at a value leaves it alone";
        EXPECT_EQ(slider.accessibleDescription().toStdString(), stray) << name;
    }
}

TEST_F(SettingsWindowTest, PickersWriteTheirSettingAndFollowIt) {
    control<QRadioButton>(open(SettingsTab::appearance), "Tint").click();
    EXPECT_EQ(settings.effectMode.value(), EffectMode::tint);
    settings.effectMode.set(EffectMode::dim);
    EXPECT_TRUE(control<QRadioButton>(page(), "Dim").isChecked());
    EXPECT_THAT(readTexts(page()),
                testing::Contains("Darkens background windows with a translucent overlay."));

    auto &rules = open(SettingsTab::rules);
    control<QRadioButton>(rules, "Stable").click();
    EXPECT_EQ(settings.coverWindowLockDuration.value(), 0.5);
    settings.coverWindowLockDuration.set(0.3);
    EXPECT_TRUE(control<QRadioButton>(rules, "Balanced").isChecked());
    EXPECT_THAT(readTexts(rules), testing::Contains(coverLockDetail(0.3)));
    EXPECT_EQ(settings.coverWindowLockDuration.value(), 0.3);
    control<QRadioButton>(rules, "Global").click();
    EXPECT_EQ(settings.multiScreenMode.value(), MultiScreenMode::global);

    auto &modifier = control<Picker>(open(SettingsTab::shortcuts), "Shake Peek Modifier");
    EXPECT_EQ(modifier.currentText(), "Shift");
    QTest::keyClick(&modifier, Qt::Key_Down);
    EXPECT_EQ(settings.shakePeekModifier.value(), "Option");
    settings.shakePeekModifier.set("Hyper");
    EXPECT_EQ(modifier.currentText(), "None");
    EXPECT_EQ(settings.shakePeekModifier.value(), "Hyper");
}

TEST_F(SettingsWindowTest, CoverAppIsPickedAndCleared) {
    auto &rules = open(SettingsTab::rules);
    auto &picker = control<Picker>(rules, "Cover App");
    const auto hint = testing::Contains("Cover App is set. Per Screen may still appear globally "
                                        "locked.");
    EXPECT_EQ(picker.itemText(0), "None");
    EXPECT_EQ(picker.currentIndex(), 0);
    settings.privacyCoverEnabled.set(true);
    EXPECT_THAT(readTexts(page()), testing::Not(hint));

    QTest::keyClick(&picker, Qt::Key_Down);
    ASSERT_EQ(stage.chosenCovers.size(), 1);
    EXPECT_EQ(stage.chosenCovers[0]->bundleID, "org.example.Browser");
    EXPECT_THAT(readTexts(page()), hint);
    settings.multiScreenMode.set(MultiScreenMode::global);
    EXPECT_THAT(readTexts(page()), testing::Not(hint));
    settings.multiScreenMode.set(MultiScreenMode::perScreen);
    settle();
    control<QPushButton>(rules, "Clear Cover App").click();
    EXPECT_FALSE(stage.chosenCovers.back());
    EXPECT_THAT(readTexts(page()), testing::Not(hint));
    EXPECT_EQ(picker.currentIndex(), 0);

    settings.privacyCoverBundleID.set("org.example.Gone");
    settings.privacyCoverDisplayName.set("Gone");
    settle();
    EXPECT_EQ(picker.currentText(), "Gone") << "chosen elsewhere, without a window";
    control<QPushButton>(rules, "Use Frontmost App").click();
    EXPECT_THAT(stage.actions, ElementsAre("useFrontmost"));
    const auto arrived = stage.desktop.launch("Arrived", "org.example.Arrived");
    stage.desktop.openWindow(arrived, {0, 0, 400, 400});
    EXPECT_EQ(picker.findText("Arrived"), -1);
    control<QPushButton>(rules, "Refresh App List").click();
    EXPECT_EQ(picker.findText("Arrived"), 1);
}

TEST_F(SettingsWindowTest, RulesAreSearchedSwitchedAddedAndRemoved) {
    auto &rules = open(SettingsTab::rules);
    EXPECT_THAT(shownRules(), ElementsAre("Finder", "Dock", "System Settings", "Control Center",
                                          "iMovie", "Final Cut Pro"));
    constexpr int ontoSwitch = 60;
    constexpr int ontoRemove = 20;
    clickRule(1, ontoSwitch);
    EXPECT_FALSE(settings.blacklist.value()[1].isEnabled);
    clickRule(0, ontoRemove);
    EXPECT_EQ(shownRules().front(), "Dock");
    clickRule(2, ontoSwitch, true);
    EXPECT_TRUE(settings.blacklist.value()[2].isEnabled);
    clickRule(0, 300);
    EXPECT_EQ(shownRules().size(), 5) << "only selects";
    auto &list = control<QListView>(rules, "App rules");
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_TRUE(settings.blacklist.value()[0].isEnabled);
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(shownRules().front(), "System Settings");

    auto &search = control<SearchField>(rules, "Search apps...");
    QTest::keyClicks(&search, "FINAL");
    EXPECT_THAT(shownRules(), ElementsAre("Final Cut Pro"));
    QTest::keyClicks(&search, "x");
    settle();
    EXPECT_THAT(readTexts(page()), testing::Contains("No rules to show."));
    search.clear();

    control<QRadioButton>(rules, "Whitelist").click();
    EXPECT_TRUE(settings.useWhitelistMode.value());
    EXPECT_EQ(shownRules().size(), 30);
    EXPECT_THAT(readTexts(page()),
                testing::Contains("Only whitelisted apps will be affected by Lumo."));
    settings.useWhitelistMode.set(false);

    settle();
    control<QPushButton>(rules, "Add App...").click();
    const auto &chooser = *view->findChild<AppChooserView *>();
    QTest::keyClicks(chooser.findChild<SearchField *>(), "photo");
    const auto &apps = *chooser.findChild<QListView *>();
    ASSERT_EQ(apps.model()->rowCount(), 1);
    QTest::mouseClick(apps.viewport(), Qt::LeftButton, {},
                      apps.visualRect(apps.model()->index(0, 0)).center());
    EXPECT_EQ(shownRules().back(), "Photos");
}

TEST_F(SettingsWindowTest, TypedIdentifierBecomesAShownRule) {
    auto &rules = open(SettingsTab::rules);
    auto &list = control<QListView>(rules, "App rules");
    auto &search = control<SearchField>(rules, "Search apps...");
    settings.whitelist.set(settings.whitelist.defaultValue());
    settings.useWhitelistMode.set(true);
    settle();
    struct Case {
        const char *typed;
        const char *shown; // the name of the rule, none where the identifier is refused
    };
    for (const auto &[typed, shown] :
         {Case{" org.example.Typed ", "org.example.Typed"}, Case{"", nullptr}, Case{"  ", nullptr},
          Case{"My App", nullptr}, Case{"/usr/bin/app", nullptr},
          Case{"com.apple.Safari", "Safari"}}) {
        search.setText("zoom");
        settings.whitelist.set([rules = settings.whitelist.value()]() mutable {
            rules.front().isEnabled = false;
            return rules;
        }());
        const auto count = settings.whitelist.value().size();
        control<QPushButton>(rules, "Add App...").click();
        auto &chooser = *view->findChild<AppChooserView *>();
        auto &field = control<QLineEdit>(chooser, "Or type an app identifier");
        QTest::keyClicks(&field, typed);
        EXPECT_EQ(control<QPushButton>(chooser, "Add").isEnabled(), shown != nullptr) << typed;
        QTest::keyClick(&field, Qt::Key_Return);
        settle();
        EXPECT_EQ(chooser.isVisible(), shown == nullptr) << typed;
        chooser.reject();
        if (shown != nullptr) {
            EXPECT_EQ(list.currentIndex().data(), shown);
            EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(list.currentIndex())));
            EXPECT_EQ(list.currentIndex().data(Qt::CheckStateRole), Qt::Checked);
        } else {
            EXPECT_EQ(settings.whitelist.value().size(), count);
        }
    }
    EXPECT_EQ(settings.whitelist.value().size(), 31) << "Safari had a rule";
}

TEST_F(SettingsWindowTest, ShortcutIsRecorded) {
    auto &shortcuts = open(SettingsTab::shortcuts);
    const auto press = [this](std::uint16_t key, std::uint32_t flags) {
        stage.desktop.pressKey(key, flags, test::ScriptedDesktop::Target::lumo);
    };
    auto &button = control<QPushButton>(shortcuts, "Enable Toggle Shortcut: ⌃Space");
    EXPECT_GE(button.width(), 120);
    button.click();
    EXPECT_EQ(button.text(), "Press keys...");
    press(53, 0);
    EXPECT_EQ(button.text(), "Press keys...") << "Escape does not cancel";
    control<QPushButton>(shortcuts, "Cancel").click();
    EXPECT_EQ(button.text(), "⌃Space");
    button.click();
    press(40, modifierFlag::control | modifierFlag::shift);
    EXPECT_EQ(button.text(), "⌃⇧K");
    EXPECT_EQ(settings.toggleShortcutKey.value(), 40);
    auto &peek = control<QPushButton>(shortcuts, "Enable Peek Shortcut: ⌘⌥Tab");
    button.click();
    peek.click();
    press(11, modifierFlag::control);
    EXPECT_EQ(button.text(), "⌃⇧K") << "a second recording ends the first";
    EXPECT_EQ(peek.text(), "⌃B");
    button.click();
    open(SettingsTab::general);
    press(8, modifierFlag::control);
    EXPECT_EQ(settings.toggleShortcutKey.value(), 40) << "nobody sees that it still records";
    control<QPushButton>(open(SettingsTab::shortcuts), "Reset to Defaults").click();
    EXPECT_EQ(button.text(), "⌃Space");
}

TEST_F(SettingsWindowTest, SidebarSelectsThePage) {
    open(SettingsTab::general);
    auto &sidebar = control<QListWidget>(*view, "Pages");
    EXPECT_EQ(sidebar.parentWidget()->width(), 170);
    QTest::keyClick(&sidebar, Qt::Key_Down);
    EXPECT_EQ(stage.selectedTab.value(), SettingsTab::appearance);
    EXPECT_EQ(readTexts(page()).front(), "Appearance");
    stage.selectedTab.set(SettingsTab::shortcuts);
    EXPECT_EQ(sidebar.currentRow(), 3);
    EXPECT_EQ(readTexts(page()).front(), "Shortcuts");
}

TEST_F(SettingsWindowTest, LongListsScrollToTheirEnd) {
    std::vector<AppRule> rules;
    for (int number = 0; number < 300; ++number) {
        const auto name = "App " + std::to_string(number);
        rules.push_back({name, "org.example.App" + std::to_string(number), name, true});
    }
    auto &page = open(SettingsTab::rules);
    const auto before = page.findChildren<QWidget *>().size();
    settings.blacklist.set(rules);
    EXPECT_EQ(shownRules().size(), 300);
    EXPECT_EQ(page.findChildren<QWidget *>().size(), before);
    auto &list = control<QListView>(page, "App rules");
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_End);
    const auto last = list.model()->index(299, 0);
    EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(last)));
    QTest::keyClick(&list, Qt::Key_Space);
    settle();
    EXPECT_FALSE(settings.blacklist.value().back().isEnabled);
    EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(last))) << "stays where it is";
}

} // namespace
} // namespace lumo
