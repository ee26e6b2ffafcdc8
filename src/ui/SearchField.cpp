#include "ui/SearchField.h"

#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace lumo {

namespace {

constexpr int fieldHeight = 30;
constexpr int textMargin = 7;
constexpr int searchSymbolSize = 14;

void dress(QLineEdit &field, std::string_view placeholder) {
    field.setFont(fontOf(TextStyle::body));
    field.setPlaceholderText(toQString(placeholder));
    field.setAccessibleName(field.placeholderText());
    field.setFixedHeight(fieldHeight);
    field.setAlignment(QStyle::visualAlignment(QApplication::layoutDirection(), Qt::AlignLeft) |
                       Qt::AlignAbsolute | Qt::AlignVCenter);
    field.setTextMargins(textMargin, 0, textMargin, 0);
}

} // namespace

SearchField::SearchField(std::string_view placeholder) {
    dress(*this, placeholder);
    const int symbolRoom = searchSymbolSize + textMargin + spacing::medium;
    setTextMargins(isRightToLeft() ? textMargin : symbolRoom, 0,
                   isRightToLeft() ? symbolRoom : textMargin, 0);
}

void SearchField::paintEvent(QPaintEvent *event) {
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const QRect area(10, (height() - searchSymbolSize) / 2, searchSymbolSize, searchSymbolSize);
    paintSymbol(painter, symbol::search, QStyle::visualRect(layoutDirection(), rect(), area),
                palette().color(role::secondaryText));
}

QLineEdit *makeTextField(std::string_view placeholder) {
    auto *field = new QLineEdit;
    dress(*field, placeholder);
    return field;
}

} // namespace lumo
