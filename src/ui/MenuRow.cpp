#include "ui/MenuRow.h"

#include "ui/Painting.h"
#include "ui/Theme.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QWidget>

namespace lumo::menuRow {

namespace {

constexpr double opacityWhenDisabled = 0.5;

int lineHeight(TextStyle style) {
    return QFontMetrics(fontOf(style)).height();
}

} // namespace

int height(bool hasSubtitle) {
    const int title = lineHeight(TextStyle::body);
    return 2 * verticalPadding + title + (hasSubtitle ? lineHeight(TextStyle::caption) : 0);
}

void paintHighlight(QPainter &painter, const QWidget &row, bool isDown) {
    if (!row.isEnabled()) {
        painter.setOpacity(opacityWhenDisabled);
        return;
    }
    const QRectF area = QRectF(row.rect()).adjusted(5, 2, -5, -2);
    if (row.underMouse() || isDown) {
        paintRounded(painter, area, corner::control,
                     row.palette().color(isDown ? role::pressed : role::hovered));
    }
    if (showsFocus(row)) {
        paintFocusRing(painter, area, corner::control, row.palette());
    }
}

void paintTexts(QPainter &painter, const QWidget &row, int width, const QString &title,
                const QString &subtitle) {
    // The row says itself how it looks when disabled.
    const auto color = [&row](QPalette::ColorRole role) {
        return row.palette().color(QPalette::Active, role);
    };
    const auto line = [&](const QString &text, TextStyle style, int top, const QColor &textColor) {
        const QFont font = fontOf(style);
        const QFontMetrics metrics(font);
        painter.setFont(font);
        painter.setPen(textColor);
        const QRect area(horizontalPadding, top, width, metrics.height());
        painter.drawText(
            QStyle::visualRect(row.layoutDirection(), row.rect(), area),
            static_cast<int>(QStyle::visualAlignment(row.layoutDirection(), Qt::AlignLeft)) |
                Qt::AlignTop | Qt::TextSingleLine,
            metrics.elidedText(text, Qt::ElideRight, width));
    };
    const int top = (row.height() - height(!subtitle.isEmpty())) / 2 + verticalPadding;
    line(title, TextStyle::body, top, color(role::text));
    if (!subtitle.isEmpty()) {
        line(subtitle, TextStyle::caption, top + lineHeight(TextStyle::body),
             color(role::secondaryText));
    }
}

bool textsFit(int width, const QString &title, const QString &subtitle) {
    return QFontMetrics(fontOf(TextStyle::body)).horizontalAdvance(title) <= width &&
           QFontMetrics(fontOf(TextStyle::caption)).horizontalAdvance(subtitle) <= width;
}

bool movesBetweenRows(const QKeyEvent &event) {
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return false;
    }
}

} // namespace lumo::menuRow
