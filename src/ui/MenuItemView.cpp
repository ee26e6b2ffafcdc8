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
    const auto widthOf = [](TextStyle style, const QString &line) {
        return QFontMetrics(fontOf(style)).horizontalAdvance(line);
    };
    const bool fits =
        widthOf(TextStyle::body, text()) <= textWidth() &&
        widthOf(TextStyle::caption, subtitle_) <= textWidth() &&
        (shortcut_.isEmpty() || widthOf(TextStyle::note, shortcut_) <= shortcutWidth());
    QStringList all{text(), subtitle_, shortcut_};
    all.removeAll(QString());
    setToolTip(fits ? QString() : all.join(QLatin1Char('\n')));
    updateGeometry();
    update();
}

void MenuItemView::resizeEvent(QResizeEvent *event) {
    QPushButton::resizeEvent(event);
    textsChanged();
}

int MenuItemView::textWidth() const {
    return width() - 2 * menuRow::horizontalPadding;
}

// Beside the title, whose line it shares.
int MenuItemView::shortcutWidth() const {
    const int title = QFontMetrics(fontOf(TextStyle::body)).horizontalAdvance(text());
    return textWidth() - title - spacing::medium;
}

QSize MenuItemView::sizeHint() const {
    return {2 * menuRow::horizontalPadding,
            menuRow::height(subtitle_.isEmpty() ? 0 : 1, padding())};
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
    menuRow::paintTexts(painter, *this, textWidth(), text(),
                        subtitle_.isEmpty() ? QStringList() : QStringList(subtitle_), textWidth());
    if (!shortcut_.isEmpty()) {
        painter.setFont(fontOf(TextStyle::note));
        painter.setPen(palette().color(QPalette::Active, role::secondaryText));
        const QRect area(menuRow::horizontalPadding + textWidth() - shortcutWidth(), 0,
                         shortcutWidth(), menuRow::height(0, padding()));
        paintLine(painter, QStyle::visualRect(layoutDirection(), rect(), area),
                  Qt::AlignRight | Qt::AlignVCenter, layoutDirection(), shortcut_);
    }
}

} // namespace lumo
