#include "ui/Labels.h"

#include "ui/Painting.h"
#include "ui/Symbols.h"
#include "ui/Text.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace lumo {

QLabel *makeLabel(std::string_view text, TextStyle style, QPalette::ColorRole color) {
    auto *label = new QLabel(toQString(text));
    label->setTextFormat(Qt::PlainText);
    label->setFont(fontOf(style));
    label->setForegroundRole(color);
    // On the side where lines begin in this language, whichever way the text itself runs.
    label->setAlignment(
        QStyle::visualAlignment(QApplication::layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter) |
        Qt::AlignAbsolute);
    return label;
}

QLabel *makeNote(std::string_view text, TextStyle style) {
    auto *note = makeLabel(text, style, role::secondaryText);
    note->setWordWrap(true);
    return note;
}

ElidedLabel::ElidedLabel(TextStyle style, QPalette::ColorRole color) {
    setTextFormat(Qt::PlainText);
    setFont(fontOf(style));
    setForegroundRole(color);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setFullText(const QString &text) {
    if (text != this->text()) {
        setText(text);
        updateToolTip();
    }
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::updateToolTip() {
    const bool fits = fontMetrics().horizontalAdvance(text()) <= contentsRect().width();
    setToolTip(fits ? QString() : text());
}

void ElidedLabel::resizeEvent(QResizeEvent *event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(foregroundRole()));
    paintLine(painter, contentsRect(), alignment(), layoutDirection(), text());
}

SymbolView::SymbolView(std::string_view name, int size, QPalette::ColorRole color)
    : name_(name)
    , color_(color) {
    setFixedSize(size, size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolView::setSymbol(std::string_view name, QPalette::ColorRole color) {
    if (name != name_ || color != color_) {
        name_ = name;
        color_ = color;
        update();
    }
}

void SymbolView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintSymbol(painter, name_, rect(), palette().color(color_));
}

} // namespace lumo
