#include "ui/MenuItemView.h"

#include "ui/MenuRow.h"
#include "ui/Painting.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <utility>

namespace lumo {

MenuItemView::MenuItemView(std::string_view title, std::function<void()> action)
    : QPushButton(toQString(title)) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setAutoDefault(true); // Return presses the row that has the focus
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QObject::connect(this, &QPushButton::clicked, this, [action = std::move(action)] { action(); });
}

void MenuItemView::setTitle(const std::string &title) {
    change(toQString(title), subtitle_, shortcut_);
}

void MenuItemView::setSubtitle(const std::optional<std::string> &subtitle) {
    change(text(), toQString(subtitle.value_or("")), shortcut_);
}

void MenuItemView::setShortcut(const std::optional<std::string> &shortcut) {
    change(text(), subtitle_, toQString(shortcut.value_or("")));
}

void MenuItemView::change(const QString &title, const QString &subtitle, const QString &shortcut) {
    if (title != text() || subtitle != subtitle_ || shortcut != shortcut_) {
        setText(title);
        subtitle_ = subtitle;
        shortcut_ = shortcut;
        textsChanged();
    }
}

void MenuItemView::textsChanged() {
    setAccessibleName(text());
    setAccessibleDescription(shortcut_.isEmpty() ? subtitle_
                                                 : subtitle_ + QLatin1Char(' ') + shortcut_);
    const bool fits =
        QFontMetrics(fontOf(TextStyle::body)).horizontalAdvance(text()) <= titleWidth() &&
        QFontMetrics(fontOf(TextStyle::caption)).horizontalAdvance(subtitle_) <= subtitleWidth();
    setToolTip(fits                  ? QString()
               : subtitle_.isEmpty() ? text()
                                     : text() + QLatin1Char('\n') + subtitle_);
    updateGeometry();
    update();
}

void MenuItemView::resizeEvent(QResizeEvent *event) {
    QPushButton::resizeEvent(event);
    textsChanged();
}

int MenuItemView::titleWidth() const {
    const int whole = width() - 2 * menuRow::horizontalPadding;
    return shortcut_.isEmpty()
               ? whole
               : whole - spacing::medium -
                     QFontMetrics(fontOf(TextStyle::note)).horizontalAdvance(shortcut_);
}

// The shortcut stands in the middle of the row's end, unless a long subtitle needs the room: then
// on the title's line.
int MenuItemView::subtitleWidth() const {
    const int wanted = QFontMetrics(fontOf(TextStyle::caption)).horizontalAdvance(subtitle_);
    return wanted <= titleWidth() ? titleWidth() : width() - 2 * menuRow::horizontalPadding;
}

QSize MenuItemView::sizeHint() const {
    return {2 * menuRow::horizontalPadding, menuRow::height(subtitle_.isEmpty() ? 0 : 1)};
}

QSize MenuItemView::minimumSizeHint() const {
    return sizeHint();
}

// Which row comes next is the menu's affair.
void MenuItemView::keyPressEvent(QKeyEvent *event) {
    if (menuRow::movesBetweenRows(*event)) {
        event->ignore();
    } else {
        QPushButton::keyPressEvent(event);
    }
}

void MenuItemView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    menuRow::paintHighlight(painter, *this, isDown());
    menuRow::paintTexts(painter, *this, titleWidth(), text(),
                        subtitle_.isEmpty() ? QStringList() : QStringList(subtitle_),
                        subtitleWidth());
    if (!shortcut_.isEmpty()) {
        painter.setFont(fontOf(TextStyle::note));
        painter.setPen(palette().color(QPalette::Active, role::secondaryText));
        QRect area = rect().adjusted(menuRow::horizontalPadding, 0, -menuRow::horizontalPadding, 0);
        if (subtitleWidth() > titleWidth()) {
            area.setHeight(menuRow::height(0));
        }
        paintLine(painter, area, Qt::AlignRight | Qt::AlignVCenter, layoutDirection(), shortcut_);
    }
}

} // namespace lumo
