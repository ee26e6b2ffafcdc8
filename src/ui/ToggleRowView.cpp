#include "ui/ToggleRowView.h"

#include "ui/MenuRow.h"
#include "ui/Switch.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

namespace lumo {

ToggleRowView::ToggleRowView(std::string_view title)
    : QCheckBox(toQString(title)) {
    setAccessibleName(text());
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ToggleRowView::setSubtitle(const std::optional<std::string> &subtitle) {
    subtitle_ = toQString(subtitle.value_or(""));
    setAccessibleDescription(subtitle_);
    updateToolTip();
    updateGeometry();
    update();
}

void ToggleRowView::updateToolTip() {
    setToolTip(menuRow::textsFit(textWidth(), text(), subtitle_)
                   ? QString()
                   : text() + QLatin1Char('\n') + subtitle_);
}

void ToggleRowView::resizeEvent(QResizeEvent *event) {
    QCheckBox::resizeEvent(event);
    updateToolTip();
}

int ToggleRowView::textWidth() const {
    return width() - 2 * menuRow::horizontalPadding - Switch::size.width() - spacing::medium;
}

QSize ToggleRowView::sizeHint() const {
    return {2 * menuRow::horizontalPadding + Switch::size.width(),
            menuRow::height(!subtitle_.isEmpty())};
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
    menuRow::paintTexts(painter, *this, textWidth(), text(), subtitle_);
    const QRect area(width() - menuRow::horizontalPadding - Switch::size.width(),
                     (height() - Switch::size.height()) / 2, Switch::size.width(),
                     Switch::size.height());
    const double onness = isChecked() ? 1 : 0;
    paintSwitch(painter, QStyle::visualRect(layoutDirection(), rect(), area),
                isRightToLeft() ? 1 - onness : onness, onness, palette(), isEnabled());
}

} // namespace lumo
