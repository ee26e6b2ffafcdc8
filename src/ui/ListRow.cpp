#include "ui/ListRow.h"

#include "ui/Painting.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHelpEvent>
#include <QListView>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <string_view>

namespace lumo {

namespace {

constexpr int rowSymbolSize = 17;
constexpr int checkSize = 13;

std::string_view symbolOf(const QByteArray &name) {
    return {name.constData(), static_cast<std::size_t>(name.size())};
}

bool isChecked(const QModelIndex &index) {
    return index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

} // namespace

void dressList(QListView &list, std::string_view name) {
    list.setAccessibleName(toQString(name));
    list.setFrameShape(QFrame::NoFrame);
    list.setUniformItemSizes(true);
    list.setMouseTracking(true);
    list.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list.setEditTriggers(QAbstractItemView::NoEditTriggers);
    list.viewport()->setAutoFillBackground(false);
}

QSize ListRow::sizeHint(const QStyleOptionViewItem & /*option*/,
                        const QModelIndex & /*index*/) const {
    return {60, rowHeight_};
}

bool ListRow::paintHighlight(QPainter &painter, const QStyleOptionViewItem &option) const {
    const QRectF area = QRectF(option.rect).adjusted(highlightInset_, 1, -highlightInset_, -1);
    const bool isSelected = (option.state & QStyle::State_Selected) != 0;
    const bool isHovered = (option.state & QStyle::State_MouseOver) != 0;
    if (isSelected && isProminent_) {
        paintRounded(painter, area, corner::control, option.palette.color(role::accent));
    } else if (isSelected || isHovered) {
        paintRounded(painter, area, corner::control,
                     option.palette.color(isSelected ? role::pressed : role::hovered));
    }
    const auto *view = qobject_cast<const QWidget *>(option.widget);
    if ((option.state & QStyle::State_HasFocus) != 0 && view != nullptr && showsFocus(*view)) {
        paintFocusRing(painter, area, corner::control, option.palette);
    }
    return isSelected && isProminent_;
}

QRect ListRow::textArea(const QStyleOptionViewItem &option, const QModelIndex &index) const {
    QRect area = option.rect.adjusted(spacing::large, 0, -spacing::large, 0);
    if (index.data(symbolRole).isValid()) {
        area.setLeft(area.left() + rowSymbolSize + spacing::medium);
    }
    if (isChecked(index)) {
        area.setRight(area.right() - checkSize - spacing::medium);
    }
    return QStyle::visualRect(option.direction, option.rect, area);
}

void ListRow::paintTexts(QPainter &painter, const QRect &area, const QStyleOptionViewItem &option,
                         const QModelIndex &index, bool isOnAccent) const {
    const auto line = [&](const QString &text, const QFont &font, const QRect &place,
                          QPalette::ColorRole color, Qt::Alignment vertical) {
        painter.setFont(font);
        painter.setPen(option.palette.color(isOnAccent ? role::textOnAccent : color));
        paintLine(painter, place, Qt::AlignLeft | vertical, option.direction, text);
    };
    const auto title = index.data(Qt::DisplayRole).toString();
    const auto detail = index.data(detailRole).toString();
    if (detail.isEmpty()) {
        line(title, fontOf(TextStyle::body), area, role::text, Qt::AlignVCenter);
        return;
    }
    const int titleHeight = QFontMetrics(fontOf(TextStyle::body)).height();
    const int detailHeight = QFontMetrics(fontOf(TextStyle::caption)).height();
    const int top = area.top() + (area.height() - titleHeight - detailHeight - spacing::tight) / 2;
    line(title, fontOf(TextStyle::body), {area.left(), top, area.width(), titleHeight}, role::text,
         Qt::AlignTop);
    line(detail, fontOf(TextStyle::caption),
         {area.left(), top + titleHeight + spacing::tight, area.width(), detailHeight},
         role::secondaryText, Qt::AlignTop);
}

void ListRow::paint(QPainter *painter, const QStyleOptionViewItem &option,
                    const QModelIndex &index) const {
    painter->save();
    const bool isOnAccent = paintHighlight(*painter, option);
    const auto color = option.palette.color(isOnAccent ? role::textOnAccent : role::text);
    const QRect row = option.rect.adjusted(spacing::large, 0, -spacing::large, 0);
    const auto place = [&](int x, int size) {
        const QRect area(x, row.top() + (row.height() - size) / 2, size, size);
        return QStyle::visualRect(option.direction, option.rect, area);
    };
    if (const auto symbol = index.data(symbolRole); symbol.isValid()) {
        paintSymbol(*painter, symbolOf(symbol.toByteArray()), place(row.left(), rowSymbolSize),
                    color);
    }
    if (isChecked(index)) {
        paintSymbol(*painter, symbol::check, place(row.right() - checkSize, checkSize),
                    option.palette.color(isOnAccent ? role::textOnAccent : role::accentText));
    }
    paintTexts(*painter, textArea(option, index), option, index, isOnAccent);
    painter->restore();
}

bool ListRow::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                        const QStyleOptionViewItem &option, const QModelIndex &index) {
    if (event->type() != QEvent::ToolTip || !index.isValid()) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const int room = textArea(option, index).width();
    const auto title = index.data(Qt::DisplayRole).toString();
    const auto detail = index.data(detailRole).toString();
    const bool fits = QFontMetrics(fontOf(TextStyle::body)).horizontalAdvance(title) <= room &&
                      QFontMetrics(fontOf(TextStyle::caption)).horizontalAdvance(detail) <= room;
    QToolTip::showText(event->globalPos(),
                       fits               ? QString()
                       : detail.isEmpty() ? title
                                          : title + QLatin1Char('\n') + detail,
                       view->viewport());
    return true;
}

} // namespace lumo
