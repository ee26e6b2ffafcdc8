#pragma once

#include "ui/ListRow.h"

#include <functional>

namespace lumo {

// One row of the rule list: the name over the bundle identifier, the rule's switch, and a button
// that removes the rule. The switch is the item's check state.
class RuleRowView final : public ListRow {
  public:
    static constexpr int height = 48; // points

    explicit RuleRowView(QObject *parent);

    std::function<void(const QModelIndex &)> onToggle;
    std::function<void(const QModelIndex &)> onRemove;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

    // Where the row's controls are.
    static QRect switchArea(const QStyleOptionViewItem &option);
    static QRect removeArea(const QStyleOptionViewItem &option);

  protected:
    QRect textArea(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace lumo
