#include "ui/ProgramIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPixmap>

namespace lumo {

namespace {

constexpr double designedIconSide = 1024; // of the square that the icon is designed on

void paintIcon(QPainter &painter) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto fill = [&painter](const QRectF &area, double radius, const QBrush &brush) {
        painter.setBrush(brush);
        painter.drawRoundedRect(area, radius, radius);
    };
    constexpr double corner = 28;
    const QColor unfocused(255, 255, 255, 41);
    QLinearGradient night(0, 100, 0, 924);
    night.setColorAt(0, QColor(0x3a, 0x46, 0x74));
    night.setColorAt(1, QColor(0x14, 0x1a, 0x33));
    fill({100, 100, 824, 824}, 184, night);
    fill({212, 268, 420, 300}, corner, unfocused);
    fill({424, 508, 400, 280}, corner, unfocused);
    fill({306, 376, 412, 296}, corner, QColor(0xfd, 0xfd, 0xff));
    fill({306, 376, 412, 60}, corner, QColor(0xd5, 0xda, 0xee));
    fill({333, 395, 22, 22}, 11, QColor(0x6b, 0x7b, 0xb8));
}

} // namespace

void paintProgramIcon(QPainter &painter, const QRectF &square) {
    constexpr double margin = 100;
    const double scale = square.width() / (designedIconSide - 2 * margin);
    painter.save();
    painter.translate(square.topLeft());
    painter.scale(scale, scale);
    painter.translate(-margin, -margin);
    paintIcon(painter);
    painter.restore();
}

QIcon programIcon() {
    QIcon icon;
    for (const int size : {16, 32, 64}) {
        QPixmap picture(size, size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.scale(size / designedIconSide, size / designedIconSide);
        paintIcon(painter);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

} // namespace lumo
