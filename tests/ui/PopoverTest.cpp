#include "DesktopWords.h"
#include "InterfacePages.h"
#include "Looking.h"
#include "RunningInterface.h"
#include "ui/GuidedAccessView.h"
#include "ui/ListRow.h"
#include "ui/MenuItemView.h"
#include "ui/PopoverWindow.h"
#include "ui/ScreenPlaces.h"
#include "ui/StatusMenuView.h"
#include "ui/Symbols.h"
#include "ui/Theme.h"
#include "ui/ToggleRowView.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QImage>
#include <QListView>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <clocale>
#include <cmath>
#include <memory>
#include <utility>

namespace lumo {
namespace {

using test::control;
using test::readControls;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class PopoverTest : public testing::Test {
  protected:
    PopoverTest() {
        stage.menu->prepareToShow();
        window = std::make_unique<PopoverWindow>(stage.desktop.platform(), *stage.menu,
                                                 PopoverWindow::Form::popup, true);
        window->onDismiss = [this] { ++dismissals; };
        window->setAttribute(Qt::WA_DontShowOnScreen);
        window->open({{0, 0, 260, 300}, {400, 0, 22, 22}}, false);
        settle();
    }
    void settle() {
        stage.desktop.mainLoop.runPosted();
        QApplication::processEvents();
    }
    void press(std::initializer_list<Qt::Key> keys) {
        for (const auto key : keys) {
            QTest::keyClick(window->focusWidget(), key);
            settle();
        }
    }
    std::string focused() const {
        const auto *widget = window->focusWidget();
        return widget->accessibleName().toStdString();
    }

    test::InterfaceStage stage;
    std::unique_ptr<PopoverWindow> window;
    int dismissals = 0;
};

TEST_F(PopoverTest, RowsFollowTheSettings) {
    stage.settings.isEnabled.set(true);
    stage.settings.privacyCoverEnabled.set(true);
    stage.settings.privacyCoverRuntimeStatus.set("No Cover App selected");
    settle();
    EXPECT_THAT(test::readTexts(*window), ElementsAre("Lumo is On", "No Cover App selected"));
    auto &quit = control<MenuItemView>(*window, "Quit Lumo");
    EXPECT_LE(quit.mapTo(window.get(), quit.rect().bottomLeft()).y(), 300)
        << "all rows are seen, beside the warning too";

    stage.settings.privacyCoverRuntimeStatus.set("Cover active");
    stage.settings.privacyCoverRuntimeHint.set("Cover set: Editor");
    settle();
    EXPECT_THAT(test::readTexts(*window), ElementsAre("Lumo is On", "Cover set: Editor"));
    EXPECT_THAT(readControls(*window), testing::Not(testing::Contains("Fix Now")));
    stage.settings.privacyCoverRuntimeStatus.set("Editor unavailable");
    settle();
    control<QPushButton>(*window, "Fix Now").click();
    settle();
    EXPECT_THAT(readControls(*window),
                ElementsAre("Back", "Clear selected cover app", "Running apps"));
}

// A row has a tool tip when it does not show all of its texts.
TEST(Popover, RowsShowAllOfTheirTextsInAWideFont) {
    const auto usual = QApplication::font();
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans")));
    test::InterfaceStage stage(test::desktopWords());
    StatusMenuView view(*stage.menu, stage.desktop.mainLoop);
    view.resize(StatusMenuView::contentSize);
    for (const auto show : {&StatusMenu::showMain, &StatusMenu::showSettings}) {
        (*stage.menu.*show)();
        stage.desktop.mainLoop.runPosted();
        test::layOut(view);
        for (const auto *row : view.findChildren<MenuItemView *>()) {
            if (row->isVisible()) {
                EXPECT_EQ(row->toolTip().toStdString(), "");
            }
        }
    }
    QApplication::setFont(usual);
}

TEST_F(PopoverTest, KeyboardAlone) {
    press({Qt::Key_Down, Qt::Key_Return});
    press({Qt::Key_Down, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Return, Qt::Key_Up, Qt::Key_Up,
           Qt::Key_Up, Qt::Key_Return});
    EXPECT_THAT(stage.actions, ElementsAre("toggle", "peek", "setCover", "quit"));

    press({Qt::Key_Up, Qt::Key_Return});
    EXPECT_EQ(focused(), "Back") << "on the settings page";
    press({Qt::Key_Down, Qt::Key_Return, Qt::Key_Down, Qt::Key_Return});
    EXPECT_TRUE(stage.settings.privacyCoverEnabled.value());
    EXPECT_FALSE(stage.settings.mouseShakeToggleEnabled.value());
    stage.actions.clear();
    press({Qt::Key_Down, Qt::Key_Return, Qt::Key_Down, Qt::Key_Return});
    EXPECT_THAT(stage.actions, ElementsAre("shortcuts", "settings"));
    press({Qt::Key_Left});
    EXPECT_EQ(stage.menu->page(), StatusMenu::Page::main);

    stage.menu->chooseCoverApp();
    settle();
    control<QListView>(*window, "Running apps").setFocus();
    press({Qt::Key_Home, Qt::Key_Up});
    EXPECT_EQ(focused(), "Clear selected cover app") << "above the list";
    press({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
    ASSERT_EQ(stage.chosenCovers.size(), 1);
    EXPECT_EQ(stage.chosenCovers[0]->displayName, "Calendar") << "after None and Browser";
    EXPECT_EQ(stage.menu->page(), StatusMenu::Page::main);
    EXPECT_EQ(dismissals, 0);
    press({Qt::Key_Escape});
    EXPECT_EQ(dismissals, 1);
}

TEST_F(PopoverTest, ActionsElsewhereDismissIt) {
    // Only with the release, so that the item's owner never sees half a click.
    QTest::mousePress(window.get(), Qt::RightButton, {}, {400, 100});
    EXPECT_EQ(dismissals, 0);
    QTest::mouseRelease(window.get(), Qt::RightButton, {}, {400, 100});
    EXPECT_EQ(dismissals, 1);
    QTest::mouseRelease(window.get(), Qt::RightButton, {}, {400, 100});
    EXPECT_EQ(dismissals, 1) << "the release of the click that opened it";

    // Told of buttons, it leaves the item to itself and minds all else when it begins.
    struct Case {
        unsigned button = 0;
        QPoint pressed;
        QPoint released;
        int pressDismisses = 0;
        int releaseDismisses = 0;
    };
    constexpr QPoint item{410, 10};
    constexpr QPoint elsewhere{500, 500};
    for (const auto &[button, pressed, released, pressDismisses, releaseDismisses] :
         {Case{1, {100, 100}, elsewhere, 0, 0}, Case{3, {100, 100}, item, 0, 0},
          Case{1, elsewhere, elsewhere, 1, 0}, Case{3, elsewhere, item, 1, 0},
          Case{1, item, item, 1, 0}, Case{3, item, item, 0, 0}, Case{3, item, elsewhere, 0, 1}}) {
        dismissals = 0;
        window->handleButton(button, true, pressed);
        EXPECT_EQ(dismissals, pressDismisses) << button << " at " << pressed.x();
        window->handleButton(button, false, released);
        EXPECT_EQ(dismissals, pressDismisses + releaseDismisses) << button << " at " << pressed.x();
    }

    dismissals = 1;
    const auto other = stage.desktop.launch("Other", "org.example.Other");
    stage.desktop.focusApplication(other);
    EXPECT_EQ(dismissals, 1) << "a panel that was clicked on";
    stage.desktop.advance(1);
    stage.desktop.focusApplication(std::nullopt);
    EXPECT_EQ(dismissals, 2);
    stage.settings.privacyCoverBundleID.set("org.example.Other");
    stage.settings.privacyCoverEnabled.set(true);
    stage.desktop.focusApplication(other);
    EXPECT_EQ(dismissals, 2) << "the Cover App, which the program brings forward";
    stage.settings.privacyCoverEnabled.set(false);
    stage.desktop.focusApplication(std::nullopt);
    stage.desktop.focusApplication(other);
    EXPECT_EQ(dismissals, 4);
}

TEST(PopoverPlacement, PopoverIsWhollyOnTheScreenOfTheItem) {
    // Two screens side by side, the right one main and lower by 200 pixels, at one and a half
    // pixels a point.
    const std::vector<Screen> screens{{1, {1280, 0, 1280, 720}, 1.5},
                                      {2, {0, 200 / 1.5, 1280, 720}, 1.5}};
    const std::vector<ToolkitScreen> toolkit{{{0, 0, 1280, 720}, 1.5},
                                             {{1920, 200, 1280, 720}, 1.5}};
    struct Case {
        const char *name = nullptr;
        StatusItemPlace place;
        QRect expected;
    };
    const auto at = [](double x, double y) { return StatusItemPlace{{}, {x, y}}; };
    const auto item = [](double x, double y) {
        return StatusItemPlace{Rect{x, y, 20, 20}, {x, y}};
    };
    for (const auto &[name, place, expected] : {
             Case{"below an item of a panel at the top",
                  item(1580, 700),
                  {1920 + 300 + 10 - 130, 200 + 20 + 4, 260, 300}},
             Case{"above an item of a panel at the bottom",
                  item(1680, 0),
                  {1920 + 400 + 10 - 130, 200 + 700 - 4 - 300, 260, 300}},
             Case{"pushed in from the right edge",
                  item(2540, 700),
                  {1920 + 1280 - 260, 224, 260, 300}},
             Case{"on the left screen", at(100, 720 + 200 / 1.5), {0, 4, 260, 300}},
             Case{"at a pointer in the corner", at(1280, 0), {1920, 200 + 720 - 4 - 300, 260, 300}},
         }) {
        EXPECT_EQ(popoverArea(toolkitPlace(place, screens, toolkit), {260, 300}), expected) << name;
    }
    const ToolkitPlace tiny{{10, 10, 4, 4}, {0, 0, 200, 200}};
    EXPECT_EQ(popoverArea(tiny, {260, 300}).topLeft(), QPoint(0, 0));
}

TEST(GuidedAccess, GuidanceLeadsToThePermission) {
    test::InterfaceStage stage;
    stage.desktop.accessibilityTrusted = false;
    stage.permission.checkPermission();
    stage.permission.isShowingGuidance.set(true);
    GuidedAccessView view(stage.guidanceModel());
    test::layOut(view);
    control<QPushButton>(view, "Open System Settings").click();
    EXPECT_EQ(stage.desktop.settingsOpened, 1);
    control<QPushButton>(view, "I Granted Access, Continue").click();
    EXPECT_TRUE(stage.permission.isShowingGuidance.value());
    stage.desktop.accessibilityTrusted = true;
    control<QPushButton>(view, "I Granted Access, Continue").click();
    EXPECT_TRUE(stage.permission.hasAccessibilityPermission.value());
    EXPECT_FALSE(stage.permission.isShowingGuidance.value());
    EXPECT_TRUE(view.isVisible());
}

TEST(GuidedAccess, PageOfLinuxDesktopsNamesWhatIsMissing) {
    test::InterfaceStage stage(test::desktopWords());
    stage.desktop.accessibilityTrusted = false;
    stage.desktop.showStatusItem(false);
    stage.permission.checkPermission();
    GuidedAccessView view(stage.guidanceModel());
    test::layOut(view);
    EXPECT_THAT(test::readTexts(view), Contains("No window manager answers"));
    EXPECT_THAT(test::readTexts(view), Contains("The dot in your panel")) << "it may yet come";
    stage.desktop.advance(1);
    test::layOut(view);
    EXPECT_THAT(test::readTexts(view),
                AllOf(Contains("Open the settings"), Not(Contains("The dot in your panel"))));
    EXPECT_THAT(test::readTabStops(view), ElementsAre("Check Again"));
    EXPECT_EQ(view.size(), QSize(400, 480)) << "nothing needs more room";
    stage.desktop.accessibilityTrusted = true;
    control<QPushButton>(view, "Check Again").click();
    EXPECT_THAT(test::readTabStops(view), ElementsAre("Turn Lumo On"));
    stage.desktop.changeKeyNames({{2, "E"}, {49, "Leertaste"}});
    stage.desktop.showStatusItem(true); // when the panel comes
    EXPECT_THAT(test::readTexts(view),
                AllOf(Contains("Ctrl+Leertaste"), Contains("Ctrl+Alt+Super+E"),
                      Contains("The dot in your panel"), Not(Contains("Open the settings")),
                      Not(Contains("No window manager answers"))));
    control<QPushButton>(view, "Turn Lumo On").click();
    EXPECT_THAT(stage.actions, ElementsAre("begin"));
}

TEST(QtInterface, DarkAndLightFollowTheDesktop) {
    auto &appearance = test::RunningInterface::instance().appearance;
    const auto initial = schemeOf(QApplication::palette());
    for (const bool isDark : {true, false}) {
        appearance.prefer(isDark);
        EXPECT_EQ(QApplication::palette().color(role::card),
                  makePalette(isDark ? ColorScheme::dark : ColorScheme::light).color(role::card));
    }

    // What is open looks like what is opened anew.
    appearance.prefer(false);
    for (const auto &page : test::interfacePages()) {
        if (!page.isDocumented) {
            continue;
        }
        test::InterfaceStage stage;
        const auto picture = [&](QWidget &view) {
            test::showPage({}, view, stage);
            view.move(0, 0);
            return view.grab().toImage();
        };
        const auto view = page.make(stage);
        picture(*view);
        appearance.prefer(true);
        EXPECT_EQ(picture(*view), picture(*page.make(stage))) << page.name;
        appearance.prefer(false);
    }
    appearance.prefer(std::nullopt);
    EXPECT_EQ(schemeOf(QApplication::palette()), initial);
}

TEST(QtInterface, WindowsComeAndGoWithinTheirCallbacks) {
    auto &running = test::RunningInterface::instance();
    auto &loop = running.stage.desktop.mainLoop;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes it meanwhile
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C") << "numbers in files stay as they are";
    const auto windows = [&loop] {
        loop.runPosted();
        QApplication::processEvents();
        return QApplication::topLevelWidgets().size();
    };
    const auto before = windows();

    auto popover = running.interface.makePopover(*running.stage.menu);
    EXPECT_EQ(windows(), before) << "made when shown";
    popover->show({});
    EXPECT_TRUE(popover->isShown());
    auto *row = QApplication::activePopupWidget()->findChild<MenuItemView *>();
    QObject::connect(row, &QPushButton::clicked, row, [&popover] { popover->close(); });
    row->click();
    EXPECT_FALSE(popover->isShown());
    EXPECT_EQ(windows(), before);
    popover->show({});
    popover.reset();
    EXPECT_EQ(windows(), before);

    std::unique_ptr<InterfaceWindow> settings;
    int closings = 0;
    for (int round = 0; round < 2; ++round) {
        settings = running.interface.makeSettingsWindow(running.stage.settingsModel(), [&] {
            ++closings;
            settings.reset();
        });
        settings->makeKeyAndOrderFront();
        for (auto *window : QApplication::topLevelWidgets()) {
            if (window->windowTitle() == "Lumo Settings") {
                EXPECT_EQ(window->size(), QSize(800, 540));
                window->close();
            }
        }
        EXPECT_EQ(closings, round + 1);
        EXPECT_EQ(windows(), before);
    }

    const auto notesSoon = [&] {
        windows();
        loop.advance(5);
        return std::exchange(running.unusedNotes, 0);
    };
    EXPECT_EQ(notesSoon(), 0) << "the message is still shown";
    QApplication::closeAllWindows();
    EXPECT_EQ(notesSoon(), 1);
    auto next = running.interface.makePopover(*running.stage.menu);
    next->show({});
    next->close();
    windows();
    next->show({});
    EXPECT_EQ(notesSoon(), 0) << "opened again at once";
    next.reset();
    windows();
    running.interface.showMessage("Title", "Text"); // as the other tests find it
}

} // namespace
} // namespace lumo
