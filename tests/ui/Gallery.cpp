#include "Gallery.h"

#include "InterfaceStage.h"
#include "ui/GuidedAccessView.h"
#include "ui/LumoStyle.h"
#include "ui/MessageView.h"
#include "ui/SettingsView.h"
#include "ui/StatusMenuView.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QImage>
#include <QLayout>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <array>
#include <functional>
#include <iostream>

namespace lumo::test {

namespace {

struct Page {
    std::string name;
    std::function<std::unique_ptr<QWidget>(InterfaceStage &)> make;
};

std::unique_ptr<QWidget> makePopover(InterfaceStage &stage, void (StatusMenu::*page)()) {
    stage.menu->prepareToShow();
    (*stage.menu.*page)();
    auto view = std::make_unique<StatusMenuView>(*stage.menu, stage.desktop.mainLoop);
    view->setRounded(true);
    return view;
}

// The page as tall as it needs, so that the picture shows all of it.
std::unique_ptr<QWidget> makeSettings(InterfaceStage &stage, SettingsTab tab) {
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
}

std::vector<Page> pages() {
    using Menu = StatusMenu;
    std::vector<Page> list{
        {"popover", [](auto &stage) { return makePopover(stage, &Menu::showMain); }},
        {"popover-warning",
         [](auto &stage) {
             stage.settings.privacyCoverEnabled.set(true);
             stage.settings.privacyCoverRuntimeStatus.set("No Cover App selected");
             return makePopover(stage, &Menu::showMain);
         }},
        {"popover-settings", [](auto &stage) { return makePopover(stage, &Menu::showSettings); }},
        {"popover-cover-apps",
         [](auto &stage) {
             stage.settings.privacyCoverBundleID.set("org.example.Editor");
             return makePopover(stage, &Menu::chooseCoverApp);
         }},
        {"guidance",
         [](auto &stage) {
             return std::make_unique<GuidedAccessView>(stage.desktop.platform(), stage.permission);
         }},
        {"message",
         [](auto &) {
             return std::make_unique<MessageView>("Software Update", "Lumo is up to date.", [] {});
         }},
    };
    for (const auto &[name, tab] : {std::pair{"settings-general", SettingsTab::general},
                                    std::pair{"settings-appearance", SettingsTab::appearance},
                                    std::pair{"settings-rules", SettingsTab::rules},
                                    std::pair{"settings-shortcuts", SettingsTab::shortcuts}}) {
        list.push_back({name, [tab = tab](auto &stage) { return makeSettings(stage, tab); }});
    }
    return list;
}

QImage pictureOf(QWidget &view, double scale) {
    // The layouts of a window are in force only once it is shown.
    view.setAttribute(Qt::WA_DontShowOnScreen);
    view.setAttribute(Qt::WA_TranslucentBackground);
    view.show();
    QApplication::processEvents();
    QImage image(view.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    view.render(&painter, {}, {}, QWidget::DrawChildren);
    return image;
}

} // namespace

bool drawGallery(const std::filesystem::path &directory) {
    std::filesystem::create_directories(directory);
    int count = 1;
    std::array<char, 4> name{"ui"};
    std::array<char *, 2> arguments{name.data(), nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, arguments.data());
    QApplication::setStyle(new LumoStyle);
    QApplication::setFont(QFont(QStringLiteral("Inter")));
    for (const auto scheme : {ColorScheme::light, ColorScheme::dark}) {
        QApplication::setPalette(makePalette(scheme));
        for (const auto &page : pages()) {
            for (const int scale : {1, 2}) {
                InterfaceStage stage;
                stage.settings.isEnabled.set(true);
                stage.settings.privacyCoverEnabled.set(page.name == "settings-rules");
                const auto view = page.make(stage);
                const auto file =
                    directory / (page.name + (scheme == ColorScheme::dark ? "-dark@" : "-light@") +
                                 std::to_string(scale) + "x.png");
                if (!pictureOf(*view, scale).save(QString::fromStdString(file.string()))) {
                    std::cerr << "can't write " << file << '\n';
                    return false;
                }
            }
        }
    }
    return true;
}

} // namespace lumo::test
