#pragma once

#include <QStyledItemDelegate>
#include <string_view>

class QListView;

namespace lumo {

// Gives a list the look and the manners that all have here. The name is for screen readers.
void dressList(QListView &list, std::string_view name);

// Draws a row of a list: a rounded highlight and one line of text, with the symbol that the item
// names under symbolRole before it, and a check mark at its end while the item is checked.
// What does not fit ends in an ellipsis, and the whole of it is in a tool tip.
class ListRow : public QStyledItemDelegate {
  public:
    // What an item may hold besides its text. The symbol's name is a QByteArray.
    static constexpr int symbolRole = Qt::UserRole + 1;
    // A second line, below the text.
    static constexpr int detailRole = Qt::UserRole + 3;

    explicit ListRow(QObject *parent)
        : QStyledItemDelegate(parent) {}

    // In points.
    void setRowHeight(int height) { rowHeight_ = height; }
    // How far the highlight stays away from the list's sides, in points.
    void setHighlightInset(int inset) { highlightInset_ = inset; }
    // The selected row is filled with the accent colour; a plain highlight otherwise.
    void setSelectionProminent(bool isProminent) { isProminent_ = isProminent; }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

  protected:
    // The highlight and the ring of the row. True when the row's text stands on the accent colour.
    bool paintHighlight(QPainter &painter, const QStyleOptionViewItem &option) const;

    // The text, over the detail where there is one, within the area.
    void paintTexts(QPainter &painter, const QRect &area, const QStyleOptionViewItem &option,
                    const QModelIndex &index, bool isOnAccent) const;

    // Where the texts stand.
    virtual QRect textArea(const QStyleOptionViewItem &option, const QModelIndex &index) const;

  private:
    int rowHeight_ = 30;
    int highlightInset_ = 1;
    bool isProminent_ = false;
};

} // namespace lumo
