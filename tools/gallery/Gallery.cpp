#include "Gallery.h"

#include "DesktopWords.h"
#include "InterfacePages.h"
#include "platform/macos/logic/MacVocabulary.h"
#include "ui/LumoStyle.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <array>
#include <iostream>

namespace lumo::test {

namespace {

QImage pictureOf(const InterfacePage &page, const Vocabulary &words, double scale) {
    QApplication::setLayoutDirection(page.isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
    InterfaceStage stage(words);
    stage.settings.isEnabled.set(true);
    const auto view = page.make(stage);
    view->setAttribute(Qt::WA_TranslucentBackground);
    showPage(page, *view, stage);
    QImage image(view->size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    view->render(&painter, {}, {}, QWidget::DrawChildren);
    return image;
}

bool drawPage(const InterfacePage &page, const Vocabulary &words, ColorScheme scheme, double scale,
              const std::filesystem::path &directory) {
    const auto number = QString::number(scale).toStdString();
    const auto file =
        directory /
        (page.name + (scheme == ColorScheme::dark ? "-dark@" : "-light@") + number + "x.png");
    if (!pictureOf(page, words, scale).save(QString::fromStdString(file.string()))) {
        std::cerr << "can't write " << file << '\n';
        return false;
    }
    return true;
}

} // namespace

bool drawGallery(const std::filesystem::path &directory, const std::vector<double> &scales) {
    const auto ofTheMac = directory / "mac";
    std::filesystem::create_directories(ofTheMac);
    int count = 1;
    std::array<char, 4> name{"ui"};
    std::array<char *, 2> arguments{name.data(), nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, arguments.data());
    QApplication::setStyle(new LumoStyle);
    QApplication::setFont(QFont(QStringLiteral("Inter")));
    bool isWritten = true;
    for (const auto scheme : {ColorScheme::light, ColorScheme::dark}) {
        QApplication::setPalette(makePalette(scheme));
        for (const auto &page : interfacePages()) {
            if (page.isDocumented || !scales.empty()) {
                for (const double scale : scales.empty() ? std::vector<double>{1, 2} : scales) {
                    isWritten =
                        drawPage(page, desktopWords(), scheme, scale, directory) && isWritten;
                }
            }
            if (page.isDocumented && scheme == ColorScheme::light) {
                isWritten = drawPage(page, macos::vocabulary(), scheme, 2, ofTheMac) && isWritten;
            }
        }
    }
    return isWritten;
}

} // namespace lumo::test
