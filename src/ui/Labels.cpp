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

ElidedLabel::ElidedLabel(TextStyle style, QPalette::ColorRole color, int mostLines)
    : mostLines_(mostLines) {
    setTextFormat(Qt::PlainText);
    setFont(fontOf(style));
    setForegroundRole(color);
    QSizePolicy policy(QSizePolicy::Preferred,
                       mostLines > 1 ? QSizePolicy::Minimum : QSizePolicy::Fixed);
    policy.setHeightForWidth(mostLines > 1);
    setSizePolicy(policy);
}

void ElidedLabel::setFullText(const QString &text) {
    if (text != this->text()) {
        setText(text);
        updateToolTip();
    }
}

QStringList ElidedLabel::lines(int width) const {
    return wrappedLines(text(), font(), width, mostLines_);
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

int ElidedLabel::heightForWidth(int width) const {
    return static_cast<int>(lines(width).size()) * fontMetrics().height();
}

void ElidedLabel::updateToolTip() {
    const auto shown = lines(contentsRect().width());
    setToolTip(shown.isEmpty() || text().endsWith(shown.last()) ? QString() : text());
}

void ElidedLabel::resizeEvent(QResizeEvent *event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(foregroundRole()));
    const auto shown = lines(contentsRect().width());
    const int height = fontMetrics().height();
    int top = (contentsRect().height() - static_cast<int>(shown.size()) * height) / 2;
    for (const auto &line : shown) {
        paintLine(painter, QRect(0, top, contentsRect().width(), height), alignment(),
                  layoutDirection(), line);
        top += height;
    }
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
