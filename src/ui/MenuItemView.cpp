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

namespace {

int widthOf(TextStyle style, const QString &line) {
    return QFontMetrics(fontOf(style)).horizontalAdvance(line);
}

} // namespace

MenuItemView::MenuItemView(std::string_view title, std::function<void()> action)
    : QPushButton(toQString(title)) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setAutoDefault(true); // Return presses the row that has the focus
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    QObject::connect(this, &QPushButton::clicked, this, [action = std::move(action)] { action(); });
}

void MenuItemView::setTitle(const std::string &title) {
    change(toQString(title), subtitle_, shortcut_);
}

void MenuItemView::setSubtitle(const std::optional<std::string> &subtitle, int mostLines) {
    mostSubtitleLines_ = mostLines;
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
    const auto lines = subtitleLines(width());
    const bool fits =
        widthOf(TextStyle::body, text()) <= textWidth() &&
        (lines.isEmpty() || subtitle_.endsWith(lines.last())) &&
        (shortcut_.isEmpty() || widthOf(shortcutStyle(), shortcut_) <= shortcutWidth());
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
    return textWidth() - widthOf(TextStyle::body, text()) - spacing::medium;
}

TextStyle MenuItemView::shortcutStyle() const {
    return widthOf(TextStyle::note, shortcut_) <= shortcutWidth() ? TextStyle::note
                                                                  : TextStyle::caption;
}

QStringList MenuItemView::subtitleLines(int width) const {
    return subtitle_.isEmpty()
               ? QStringList()
               : wrappedLines(subtitle_, fontOf(TextStyle::caption),
                              width - 2 * menuRow::horizontalPadding, mostSubtitleLines_);
}

int MenuItemView::heightForWidth(int width) const {
    return menuRow::height(static_cast<int>(subtitleLines(width).size()), padding());
}

QSize MenuItemView::sizeHint() const {
    return {2 * menuRow::horizontalPadding, heightForWidth(width())};
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
    menuRow::paintTexts(painter, *this, textWidth(), text(), subtitleLines(width()), textWidth());
    if (!shortcut_.isEmpty()) {
        painter.setFont(fontOf(shortcutStyle()));
        painter.setPen(palette().color(QPalette::Active, role::secondaryText));
        const QRect area(menuRow::horizontalPadding + textWidth() - shortcutWidth(), 0,
                         shortcutWidth(), menuRow::height(0, padding()));
        paintLine(painter, QStyle::visualRect(layoutDirection(), rect(), area),
                  Qt::AlignRight | Qt::AlignVCenter, layoutDirection(), shortcut_);
    }
}

} // namespace lumo
