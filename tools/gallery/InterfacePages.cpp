#include "InterfacePages.h"

#include "presentation/RuleList.h"
#include "presentation/SettingsTexts.h"
#include "ui/AppChooserView.h"
#include "ui/GuidedAccessView.h"
#include "ui/MessageView.h"
#include "ui/SearchField.h"
#include "ui/SettingsView.h"
#include "ui/StatusMenuView.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <utility>

namespace lumo::test {

namespace {

using Prepare = std::function<void(InterfaceStage &)>;
using Make = std::function<std::unique_ptr<QWidget>(InterfaceStage &)>;

constexpr auto overlongName =
    "An Application With a Name That Nobody Could Ever Want to Read Whole";

void coverFor(InterfaceStage &stage, const std::string &name) {
    stage.settings.privacyCoverEnabled.set(true);
    stage.settings.privacyCoverBundleID.set("org.example." + name);
    stage.settings.privacyCoverDisplayName.set(name);
    stage.settings.privacyCoverRuntimeStatus.set("Cover active");
}

void launchMany(InterfaceStage &stage, int count) {
    for (int number = 1; number <= count; ++number) {
        const auto name = "Tool " + std::to_string(number);
        const auto process =
            stage.desktop.launch(name, "org.example.Tool" + std::to_string(number));
        stage.desktop.openWindow(process, {0, 0, 300, 300});
    }
}

void setRules(InterfaceStage &stage, int count) {
    std::vector<AppRule> rules;
    for (int number = 1; number <= count; ++number) {
        const auto name = "Tool " + std::to_string(number);
        rules.push_back({name, "org.example.Tool" + std::to_string(number), name, number % 3 != 0});
    }
    stage.settings.blacklist.set(rules);
}

Make popover(void (StatusMenu::*page)(), Prepare prepare = {}) {
    return [page, prepare = std::move(prepare)](InterfaceStage &stage) {
        if (prepare) {
            prepare(stage);
        }
        stage.menu->prepareToShow();
        (*stage.menu.*page)();
        auto view = std::make_unique<StatusMenuView>(*stage.menu, stage.desktop.mainLoop);
        view->setRounded(true);
        return view;
    };
}

// The page as tall as it needs, so that a picture shows all of it.
Make settings(SettingsTab tab, Prepare prepare = {}) {
    return [tab, prepare = std::move(prepare)](InterfaceStage &stage) {
        if (prepare) {
            prepare(stage);
        }
        stage.selectedTab.set(tab);
        auto view = std::make_unique<SettingsView>(stage.settingsModel());
        stage.desktop.mainLoop.runPosted();
        view->ensurePolished();
        int height = SettingsView::contentSize.height();
        for (auto *page : view->findChildren<QScrollArea *>()) {
            if (page->widget() != nullptr) {
                const int width = SettingsView::contentSize.width() - SettingsView::sidebarWidth;
                height = std::max(height, page->widget()->layout()->hasHeightForWidth()
                                              ? page->widget()->layout()->heightForWidth(width)
                                              : page->widget()->sizeHint().height());
            }
        }
        view->resize(SettingsView::contentSize.width(), height);
        return view;
    };
}

Make addApp(Prepare prepare = {}) {
    return [prepare = std::move(prepare)](InterfaceStage &stage) {
        if (prepare) {
            prepare(stage);
        }
        auto view = std::make_unique<AppChooserView>(nullptr);
        view->setWindowModality(Qt::NonModal);
        view->offer(ruleCandidates(stage.desktop.platform().workspace, {}));
        view->hide();
        return view;
    };
}

Make guidance(bool isGranted) {
    return [isGranted](InterfaceStage &stage) {
        stage.desktop.accessibilityTrusted = isGranted;
        stage.permission.checkPermission();
        return std::make_unique<GuidedAccessView>(stage.guidanceModel());
    };
}

Make message(const UpdateResult &result) {
    return [result](InterfaceStage & /*stage*/) {
        return std::make_unique<MessageView>("Software Update", updateResultText(result), [] {});
    };
}

std::function<void(QWidget &)> pressing(int key, int times) {
    return [key, times](QWidget &view) {
        for (int press = 0; press < times; ++press) {
            auto *target = view.focusWidget() != nullptr ? view.focusWidget() : &view;
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            QCoreApplication::sendEvent(target, &event);
        }
    };
}

void record(QWidget &view) {
    for (auto *button : view.findChildren<QPushButton *>()) {
        if (button->accessibleName().startsWith(QStringLiteral("Enable Peek Shortcut: "))) {
            button->click();
        }
    }
}

void addDocumented(std::vector<InterfacePage> &pages) {
    using Menu = StatusMenu;
    const auto warning = [](InterfaceStage &stage) {
        stage.settings.privacyCoverEnabled.set(true);
        stage.settings.privacyCoverRuntimeStatus.set("No Cover App selected");
    };
    const auto hint = [](InterfaceStage &stage) {
        coverFor(stage, "Editor");
        stage.settings.privacyCoverRuntimeHint.set("Cover set: Editor");
    };
    const auto manyApps = [](InterfaceStage &stage) {
        coverFor(stage, "Editor");
        launchMany(stage, 12);
    };
    // Where a permission is shown that was granted, it is granted later.
    const auto firstStart = [](InterfaceStage &stage) {
        return guidance(!stage.desktop.vocabulary.firstStart.showsGrantedPermission)(stage);
    };
    pages.insert(pages.end(),
                 {{"popover", popover(&Menu::showMain)},
                  {"popover-warning", popover(&Menu::showMain, warning)},
                  {"popover-hint", popover(&Menu::showMain, hint)},
                  {"popover-settings", popover(&Menu::showSettings)},
                  {"popover-cover-apps", popover(&Menu::chooseCoverApp, manyApps)},
                  {"guidance", firstStart},
                  {"guidance-missing", guidance(false)},
                  {"message", message({UpdateResult::Kind::newerVersion, "1.1.0"})},
                  {"settings-general", settings(SettingsTab::general)},
                  {"settings-appearance", settings(SettingsTab::appearance)},
                  {"settings-rules",
                   settings(SettingsTab::rules, [](auto &stage) { coverFor(stage, "Editor"); })},
                  {"settings-add-app", addApp()},
                  {"settings-shortcuts", settings(SettingsTab::shortcuts)},
                  {"settings-shortcuts-recording", settings(SettingsTab::shortcuts), record}});
}

Make guidanceWithoutPanel() {
    return [](InterfaceStage &stage) {
        stage.desktop.showStatusItem(false);
        auto view = guidance(true)(stage);
        stage.desktop.advance(1);
        return view;
    };
}

void addExtremes(std::vector<InterfacePage> &pages) {
    using Menu = StatusMenu;
    const auto longNames = [](InterfaceStage &stage) {
        coverFor(stage, overlongName);
        stage.settings.privacyCoverRuntimeStatus.set(std::string(overlongName) + " unavailable");
        stage.settings.privacyCoverRuntimeHint.set("Cover set: " + std::string(overlongName));
        stage.settings.toggleShortcutKey.set(18);
        stage.settings.toggleShortcutModifiers.set(0x1E00);
        stage.settings.coverSetShortcutModifiers.set(0x1E00);
        stage.settings.blacklist.set(
            {{"a", "org.example." + std::string(overlongName), overlongName, true}});
        stage.desktop.installed.push_back(
            {"org.example." + std::string(overlongName), overlongName});
    };
    const auto three = [](InterfaceStage &stage) {
        launchMany(stage, 300);
        setRules(stage, 300);
    };
    const auto type = [](const char *text) {
        return [text](QWidget &view) {
            for (auto *field : view.findChildren<QLineEdit *>()) {
                field->setText(QString::fromUtf8(text));
            }
        };
    };
    const auto trouble = [](InterfaceStage &stage) {
        coverFor(stage, "Editor");
        stage.settings.privacyCoverRuntimeStatus.set("Editor unavailable");
    };
    pages.insert(
        pages.end(),
        {{"extreme-popover-off",
          popover(&Menu::showMain, [](auto &stage) { stage.settings.isEnabled.set(false); }),
          {},
          false},
         {"extreme-popover-names", popover(&Menu::showMain, longNames), {}, false},
         {"extreme-popover-settings-names", popover(&Menu::showSettings, longNames), {}, false},
         {"extreme-popover-apps-names", popover(&Menu::chooseCoverApp, longNames), {}, false},
         {"extreme-popover-apps-300", popover(&Menu::chooseCoverApp, three), {}, false},
         {"extreme-popover-focus", popover(&Menu::showMain), pressing(Qt::Key_Tab, 3), false},
         {"extreme-popover-settings-focus", popover(&Menu::showSettings), pressing(Qt::Key_Tab, 2),
          false},
         {"extreme-popover-apps-focus", popover(&Menu::chooseCoverApp), pressing(Qt::Key_Down, 3),
          false},
         {"extreme-rules-names", settings(SettingsTab::rules, longNames), {}, false},
         {"extreme-rules-300", settings(SettingsTab::rules, three), {}, false},
         {"extreme-rules-none",
          settings(SettingsTab::rules, [](auto &stage) { stage.settings.blacklist.set({}); }),
          {},
          false},
         {"extreme-rules-focus", settings(SettingsTab::rules), pressing(Qt::Key_Tab, 8), false},
         {"extreme-general-focus", settings(SettingsTab::general), pressing(Qt::Key_Tab, 3), false},
         {"extreme-shortcuts-names", settings(SettingsTab::shortcuts, longNames), {}, false},
         {"extreme-shortcuts-focus", settings(SettingsTab::shortcuts), pressing(Qt::Key_Tab, 1),
          false},
         {"extreme-add-app-300", addApp(three), {}, false},
         {"extreme-add-app-names", addApp(longNames), {}, false},
         {"extreme-add-app-nothing", addApp(), type("no such app"), false},
         {"extreme-guidance-granted", guidance(true), pressing(Qt::Key_Tab, 1), false},
         {"extreme-guidance-no-panel", guidanceWithoutPanel(), {}, false},
         {"extreme-message", message({}), pressing(Qt::Key_Tab, 1), false},
         {"mirrored-popover", popover(&Menu::showMain, trouble), {}, false, true},
         {"mirrored-popover-settings", popover(&Menu::showSettings), {}, false, true},
         {"mirrored-popover-apps", popover(&Menu::chooseCoverApp, trouble), {}, false, true},
         {"mirrored-general", settings(SettingsTab::general), {}, false, true},
         {"mirrored-appearance", settings(SettingsTab::appearance), {}, false, true},
         {"mirrored-rules", settings(SettingsTab::rules, trouble), {}, false, true},
         {"mirrored-shortcuts", settings(SettingsTab::shortcuts), record, false, true},
         {"mirrored-add-app", addApp(), {}, false, true},
         {"mirrored-guidance", guidance(false), {}, false, true}});
}

} // namespace

void showPage(const InterfacePage &page, QWidget &view, InterfaceStage &stage) {
    const auto settle = [&stage] {
        stage.desktop.mainLoop.runPosted();
        // Layouts within layouts take a round each.
        for (int round = 0; round < 5; ++round) {
            QCoreApplication::processEvents();
        }
    };
    view.move(50, 50); // away from the pointer
    view.show();
    view.activateWindow();
    settle();
    if (page.act) {
        page.act(view);
        settle();
    }
}

std::vector<InterfacePage> interfacePages() {
    std::vector<InterfacePage> pages;
    addDocumented(pages);
    addExtremes(pages);
    return pages;
}

} // namespace lumo::test
