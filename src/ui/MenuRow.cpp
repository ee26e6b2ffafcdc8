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

int height(int subtitleLines, int padding) {
    return 2 * padding + lineHeight(TextStyle::body) +
           subtitleLines * lineHeight(TextStyle::caption);
}

void paintHighlight(QPainter &painter, const QWidget &row, bool isDown) {
    if (!row.isEnabled()) {
        painter.setOpacity(opacityWhenDisabled);
        return;
    }
    const QRectF area = QRectF(row.rect()).adjusted(highlightInset, 2, -highlightInset, -2);
    if (row.underMouse() || isDown) {
        paintRounded(painter, area, corner::control,
                     row.palette().color(isDown ? role::pressed : role::hovered));
    }
    if (showsFocus(row)) {
        paintFocusRing(painter, area, corner::control, row.palette());
    }
}

void paintTexts(QPainter &painter, const QWidget &row, int titleWidth, const QString &title,
                const QStringList &subtitle, int subtitleWidth) {
    int top = (row.height() - height(static_cast<int>(subtitle.size()))) / 2 + verticalPadding;
    const auto line = [&](const QString &text, TextStyle style, int width,
                          QPalette::ColorRole color) {
        const QFont font = fontOf(style);
        const QFontMetrics metrics(font);
        painter.setFont(font);
        // The row says itself how it looks when disabled.
        painter.setPen(row.palette().color(QPalette::Active, color));
        const QRect area(horizontalPadding, top, width, metrics.height());
        paintLine(painter, QStyle::visualRect(row.layoutDirection(), row.rect(), area),
                  Qt::AlignLeft | Qt::AlignTop, row.layoutDirection(), text);
        top += metrics.height();
    };
    line(title, TextStyle::body, titleWidth, role::text);
    for (const auto &part : subtitle) {
        line(part, TextStyle::caption, subtitleWidth, role::secondaryText);
    }
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
