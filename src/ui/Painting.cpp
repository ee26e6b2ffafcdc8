#include "ui/Painting.h"

#include "ui/Theme.h"

#include <QPainter>
#include <QPalette>
#include <QString>
#include <QStyle>
#include <QTextLayout>
#include <QWidget>

namespace lumo {

bool showsFocus(const QWidget &widget) {
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

void paintFocusRing(QPainter &painter, const QRectF &area, double radius, const QPalette &palette) {
    constexpr double width = 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::Active, role::accentText), width));
    painter.setBrush(Qt::NoBrush);
    const double inset = width / 2;
    painter.drawRoundedRect(area.adjusted(inset, inset, -inset, -inset), radius, radius);
    painter.restore();
}

void paintRounded(QPainter &painter, const QRectF &area, double radius, const QColor &fill,
                  const QColor &border) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(fill);
    if (border.alpha() == 0) {
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(area, radius, radius);
    } else {
        constexpr double inset = 0.5;
        painter.setPen(QPen(border, 1));
        painter.drawRoundedRect(area.adjusted(inset, inset, -inset, -inset), radius - inset,
                                radius - inset);
    }
    painter.restore();
}

void paintLine(QPainter &painter, const QRect &area, Qt::Alignment alignment,
               Qt::LayoutDirection direction, const QString &text) {
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const auto flags = QStyle::visualAlignment(direction, alignment) | Qt::AlignAbsolute;
    painter.drawText(area, static_cast<int>(flags) | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, area.width()));
}

QStringList wrappedLines(const QString &text, const QFont &font, int width, int mostLines) {
    QTextLayout layout(text, font);
    QStringList lines;
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.size() == mostLines - 1) {
            lines.append(
                QFontMetrics(font).elidedText(text.mid(line.textStart()), Qt::ElideRight, width));
            break;
        }
        lines.append(text.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    return lines;
}

} // namespace lumo
