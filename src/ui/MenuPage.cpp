#include "ui/MenuPage.h"

#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/MenuRow.h"
#include "ui/Symbols.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace lumo::menuPage {

namespace {

constexpr int backHeaderHeight = 36;

class Divider final : public QWidget {
  public:
    Divider() { setFixedHeight(spacing::hairline); }

  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        painter.fillRect(
            rect().adjusted(menuRow::horizontalPadding, 0, -menuRow::horizontalPadding, 0),
            palette().color(role::separator));
    }
};

// Gives its rows as much padding as lets all of them be seen at once, and scrolls where even the
// least is too much. Leaves the arrow keys to the menu, which goes from row to row with them. The
// scroll bar lies over the rows' padding, so that their texts keep their room.
class RowsArea final : public QScrollArea {
  public:
    explicit RowsArea(const std::vector<QWidget *> &rows)
        : rows_(rows) {
        auto *bar = verticalScrollBar();
        bar->setAttribute(Qt::WA_OpaquePaintEvent, false);
        QObject::connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int least, int most) {
            setViewportMargins(mirrored(0, 0, most > least ? -bar->sizeHint().width() : 0, 0));
        });
    }

  protected:
    void keyPressEvent(QKeyEvent *event) override { event->ignore(); }

    void resizeEvent(QResizeEvent *event) override {
        QScrollArea::resizeEvent(event);
        fit();
    }

    bool eventFilter(QObject *object, QEvent *event) override {
        if (object == widget() && event->type() == QEvent::LayoutRequest) {
            fit();
        }
        return QScrollArea::eventFilter(object, event);
    }

  private:
    void fit() {
        const int width = viewport()->width();
        const int count = static_cast<int>(rows_.size());
        int texts = (count - 1) * spacing::hairline;
        for (const auto *row : rows_) {
            const int height =
                row->hasHeightForWidth() ? row->heightForWidth(width) : row->sizeHint().height();
            texts += height - 2 * dynamic_cast<const menuRow::Padded &>(*row).padding();
        }
        const int padding = (viewport()->height() - texts) / (2 * count);
        for (auto *row : rows_) {
            dynamic_cast<menuRow::Padded &>(*row).setPadding(
                padding < menuRow::leastVerticalPadding
                    ? menuRow::verticalPadding
                    : std::min(padding, menuRow::verticalPadding));
        }
    }

    std::vector<QWidget *> rows_;
};

} // namespace

QVBoxLayout *makeColumn(QWidget *widget) {
    auto *column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

QWidget *makeDivider() {
    return new Divider;
}

QWidget *makeRows(const std::vector<QWidget *> &rows) {
    auto *content = new QWidget;
    auto *column = makeColumn(content);
    for (auto *row : rows) {
        if (column->count() > 0) {
            column->addWidget(makeDivider());
        }
        column->addWidget(row);
    }
    column->addStretch();
    auto *area = new RowsArea(rows);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    content->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    return area;
}

QWidget *makeBackHeader(std::string_view title, std::function<void()> onBack) {
    auto *header = new QWidget;
    header->setFixedHeight(backHeaderHeight);
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(mirrored(6, 0, menuRow::horizontalPadding, 0));
    row->setSpacing(spacing::small);
    auto *back = new Button({}, Button::Kind::borderless, symbol::back);
    back->setAccessibleName(QStringLiteral("Back"));
    back->setFont(fontOf(TextStyle::noteSemibold));
    QObject::connect(back, &QPushButton::clicked, back, [onBack = std::move(onBack)] { onBack(); });
    row->addWidget(back);
    row->addWidget(makeLabel(title, TextStyle::bodyMedium), 1);
    return header;
}

} // namespace lumo::menuPage
