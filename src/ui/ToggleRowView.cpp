#include "ui/ToggleRowView.h"

#include "ui/MenuRow.h"
#include "ui/Painting.h"
#include "ui/Switch.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QStyle>

namespace lumo {

namespace {

constexpr int mostLines = 2;

int textWidthOf(int width) {
    return width - 2 * menuRow::horizontalPadding - Switch::trackSize.width() - spacing::medium;
}

} // namespace

ToggleRowView::ToggleRowView(std::string_view title)
    : QCheckBox(toQString(title)) {
    setAccessibleName(text());
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void ToggleRowView::setSubtitle(const std::optional<std::string> &subtitle) {
    const auto text = toQString(subtitle.value_or(""));
    if (text == subtitle_) {
        return;
    }
    subtitle_ = text;
    setAccessibleDescription(subtitle_);
    updateToolTip();
    updateGeometry();
    update();
}

QStringList ToggleRowView::subtitleLines(int width) const {
    return wrappedLines(subtitle_, fontOf(TextStyle::caption), textWidthOf(width), mostLines);
}

void ToggleRowView::updateToolTip() {
    const auto lines = subtitleLines(width());
    const bool fits = lines.isEmpty() || subtitle_.endsWith(lines.last());
    setToolTip(fits ? QString() : subtitle_);
}

void ToggleRowView::resizeEvent(QResizeEvent *event) {
    QCheckBox::resizeEvent(event);
    updateToolTip();
    if (event->oldSize().width() != width()) {
        updateGeometry(); // another width may take another number of lines
    }
}

int ToggleRowView::heightForWidth(int width) const {
    return menuRow::height(static_cast<int>(subtitleLines(width).size()), padding());
}

QSize ToggleRowView::sizeHint() const {
    return {2 * menuRow::horizontalPadding + Switch::trackSize.width(), heightForWidth(width())};
}

QSize ToggleRowView::minimumSizeHint() const {
    return sizeHint();
}

void ToggleRowView::keyPressEvent(QKeyEvent *event) {
    if (menuRow::movesBetweenRows(*event)) {
        event->ignore();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else {
        QCheckBox::keyPressEvent(event);
    }
}

void ToggleRowView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    menuRow::paintHighlight(painter, *this, isDown());
    menuRow::paintTexts(painter, *this, textWidthOf(width()), text(), subtitleLines(width()),
                        textWidthOf(width()));
    const QRect area(width() - menuRow::horizontalPadding - Switch::trackSize.width(),
                     (height() - Switch::trackSize.height()) / 2, Switch::trackSize.width(),
                     Switch::trackSize.height());
    const double onness = isChecked() ? 1 : 0;
    paintSwitch(painter, QStyle::visualRect(layoutDirection(), rect(), area),
                isRightToLeft() ? 1 - onness : onness, onness, palette(), isEnabled());
}

} // namespace lumo
