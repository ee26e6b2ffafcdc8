#include "ui/RuleRowView.h"

#include "ui/Switch.h"
#include "ui/Symbols.h"
#include "ui/Theme.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace lumo {

namespace {

constexpr int removeSize = 26;
constexpr int removeSymbolSize = 17;

// From the end of the row.
QRect placed(const QStyleOptionViewItem &option, int fromEnd, QSize size) {
    const QRect area(option.rect.right() - fromEnd - size.width() + 1,
                     option.rect.top() + (option.rect.height() - size.height()) / 2, size.width(),
                     size.height());
    return QStyle::visualRect(option.direction, option.rect, area);
}

} // namespace

RuleRowView::RuleRowView(QObject *parent)
    : ListRow(parent) {
    setRowHeight(height);
}

QRect RuleRowView::removeArea(const QStyleOptionViewItem &option) {
    return placed(option, spacing::medium, {removeSize, removeSize});
}

QRect RuleRowView::switchArea(const QStyleOptionViewItem &option) {
    return placed(option, spacing::medium + removeSize + spacing::medium, Switch::trackSize);
}

QRect RuleRowView::textArea(const QStyleOptionViewItem &option,
                            const QModelIndex & /*index*/) const {
    const int controls =
        2 * spacing::medium + removeSize + Switch::trackSize.width() + spacing::large;
    return QStyle::visualRect(option.direction, option.rect,
                              option.rect.adjusted(spacing::large, 0, -controls, 0));
}

void RuleRowView::paint(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const {
    painter->save();
    paintHighlight(*painter, option);
    paintTexts(*painter, textArea(option, index), option, index, false);
    const double onness = index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? 1 : 0;
    const bool isMirrored = option.direction == Qt::RightToLeft;
    paintSwitch(*painter, switchArea(option), isMirrored ? 1 - onness : onness, onness,
                option.palette, true);
    const auto remove = QRectF(removeArea(option));
    const double inset = (removeSize - removeSymbolSize) / 2.0;
    paintSymbol(*painter, symbol::remove, remove.adjusted(inset, inset, -inset, -inset),
                option.palette.color(role::secondaryText));
    painter->restore();
}

bool RuleRowView::editorEvent(QEvent *event, QAbstractItemModel * /*model*/,
                              const QStyleOptionViewItem &option, const QModelIndex &index) {
    // The second of two quick clicks, whose release the list keeps to itself.
    const bool isSecondPress = event->type() == QEvent::MouseButtonDblClick;
    if (const auto *mouse = dynamic_cast<const QMouseEvent *>(event);
        mouse != nullptr && (isSecondPress || mouse->type() == QEvent::MouseButtonRelease)) {
        const auto position = mouse->position().toPoint();
        if (mouse->button() != Qt::LeftButton) {
            return false;
        }
        if (switchArea(option).contains(position)) {
            onToggle(index);
            return true;
        }
        if (!isSecondPress && removeArea(option).contains(position)) {
            onRemove(index);
            return true;
        }
    } else if (const auto *pressed = dynamic_cast<const QKeyEvent *>(event);
               pressed != nullptr && pressed->type() == QEvent::KeyPress) {
        const int key = pressed->key();
        if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
            onToggle(index);
            return true;
        }
    }
    return false;
}

} // namespace lumo
