#include "DesktopWords.h"
#include "InterfacePages.h"
#include "Looking.h"
#include "RunningInterface.h"
#include "ui/SettingsView.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QListView>
#include <QRadioButton>
#include <QSlider>
#include <QTest>
#include <algorithm>
#include <string>
#include <vector>

namespace lumo {
namespace {

using test::control;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class EveryPage : public testing::TestWithParam<const Vocabulary *> {};

TEST_P(EveryPage, ControlsAreNamedShownWholeAndReached) {
    for (const auto &page : test::interfacePages()) {
        QApplication::setLayoutDirection(page.isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
        test::InterfaceStage stage(*GetParam());
        const auto view = page.make(stage);
        test::showPage(page, *view, stage);
        EXPECT_THAT(test::unspeakableControls(*view), IsEmpty()) << page.name;
        for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
            EXPECT_THAT(test::clippedTexts(*view, scale), IsEmpty())
                << page.name << " at " << scale;
        }
        if (!page.isMirrored) {
            // The sidebar has no place among the lines beside it.
            auto stops = test::readTabStops(*view);
            if (const auto sidebar = std::ranges::find(stops, "Pages"); sidebar != stops.end()) {
                std::rotate(stops.begin(), sidebar, sidebar + 1);
            }
            EXPECT_EQ(test::readTabOrder(*view), stops) << page.name;
        }
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

INSTANTIATE_TEST_SUITE_P(Words, EveryPage,
                         testing::Values(&macos::vocabulary(), &test::desktopWords()));

TEST(ScreenReaderSupport, ShownWindowsAreFound) {
    auto &running = test::RunningInterface::instance();
    const auto *program = QAccessible::queryAccessibleInterface(QCoreApplication::instance());
    const auto windows = [&] {
        running.stage.desktop.mainLoop.runPosted();
        std::vector<std::string> names;
        for (int index = 0; index < program->childCount(); ++index) {
            const auto *child = program->child(index);
            EXPECT_EQ(program->indexOfChild(child), index);
            EXPECT_EQ(child->role(), QAccessible::Window);
            names.push_back(child->text(QAccessible::Name).toStdString());
        }
        return names;
    };
    ASSERT_THAT(windows(), ElementsAre("Lumo")) << "the message";
    auto popover = running.interface.makePopover(*running.stage.menu);
    popover->show({});
    EXPECT_THAT(windows(), ElementsAre("Lumo", "Lumo Menu"));
    popover->close();
    auto settings = running.interface.makeSettingsWindow(running.stage.settingsModel(), [] {});
    settings->makeKeyAndOrderFront();
    EXPECT_THAT(windows(), UnorderedElementsAre("Lumo", "Lumo Settings"));
    settings.reset();
    EXPECT_THAT(windows(), ElementsAre("Lumo"));
}

} // namespace
} // namespace lumo
