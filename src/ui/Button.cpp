#include "ui/Button.h"

#include "ui/Painting.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace lumo {

namespace {

constexpr int gap = 6; // between symbol and text

} // namespace

Button::Button(std::string_view text, Kind kind, std::string_view symbol)
    : QPushButton(toQString(text))
    , kind_(kind)
    , symbol_(symbol) {
    setFont(fontOf(kind == Kind::bordered ? TextStyle::body : TextStyle::bodyMedium));
    setFocusPolicy(Qt::StrongFocus);
    setAutoDefault(true); // Return presses the button that has the focus
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Button::setRecording(bool isRecording) {
    isRecording_ = isRecording;
    update();
}

void Button::setSymbol(std::string_view symbol) {
    symbol_ = symbol;
    updateGeometry();
    update();
}

int Button::symbolSize() const {
    return symbol_.empty() ? 0 : fontMetrics().ascent() + 1;
}

int Button::contentWidth(int textWidth) const {
    return textWidth + (symbol_.empty() || text().isEmpty() ? symbolSize() : symbolSize() + gap);
}

QSize Button::sizeHint() const {
    const int margin = kind_ == Kind::borderless ? 6 : 14;
    const int height = fontMetrics().height() + (kind_ == Kind::borderless ? 6 : 12);
    return {contentWidth(fontMetrics().horizontalAdvance(text())) + 2 * margin, height};
}

QSize Button::minimumSizeHint() const {
    return sizeHint();
}

QColor Button::textColor() const {
    if (kind_ == Kind::prominent) {
        return palette().color(role::textOnAccent);
    }
    return palette().color(kind_ == Kind::borderless || isRecording_ ? role::accentText
                                                                     : role::text);
}

void Button::paintBackground(QPainter &painter) const {
    const QRectF area = rect();
    const auto color = [this](QPalette::ColorRole role) { return palette().color(role); };
    switch (kind_) {
    case Kind::bordered:
        paintRounded(painter, area, corner::control,
                     color(isDown()       ? role::pressed
                           : underMouse() ? role::hovered
                                          : role::control),
                     color(isRecording_ ? role::accentText : role::controlBorder));
        break;
    case Kind::prominent: {
        const auto accent = color(role::accent);
        paintRounded(painter, area, corner::control, isDown() ? accent.darker(115) : accent);
        if (underMouse() && !isDown()) {
            paintRounded(painter, area, corner::control, QColor(0, 0, 0, 20));
        }
        break;
    }
    case Kind::borderless:
        if (underMouse() || isDown()) {
            paintRounded(painter, area, corner::small,
                         color(isDown() ? role::pressed : role::hovered));
        }
        break;
    }
}

void Button::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintBackground(painter);
    const int room = width() - 2 * spacing::small;
    const auto line =
        fontMetrics().elidedText(text(), Qt::ElideRight, std::max(0, room - contentWidth(0)));
    const int needed = contentWidth(fontMetrics().horizontalAdvance(line));
    const QRect content((width() - needed) / 2, 0, needed, height());
    if (!symbol_.empty()) {
        const QRect area(content.x(), (height() - symbolSize()) / 2, symbolSize(), symbolSize());
        const auto color = isRecording_ ? palette().color(role::recording) : textColor();
        paintSymbol(painter, symbol_, QStyle::visualRect(layoutDirection(), content, area), color);
    }
    const QRect textArea(content.x() + contentWidth(0), 0, content.width() - contentWidth(0) + 1,
                         height());
    painter.setPen(textColor());
    painter.setFont(font());
    paintLine(painter, QStyle::visualRect(layoutDirection(), content, textArea), Qt::AlignCenter,
              layoutDirection(), line);
    if (showsFocus(*this)) {
        const bool isFilled = kind_ == Kind::prominent;
        paintFocusRing(painter, rect(), corner::control, palette());
        if (isFilled) {
            paintRounded(painter, QRectF(rect()).adjusted(2, 2, -2, -2), corner::control - 2,
                         Qt::transparent, palette().color(role::card));
        }
    }
}

} // namespace lumo
