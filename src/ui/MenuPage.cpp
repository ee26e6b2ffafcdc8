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

// Leaves the arrow keys to the menu, which goes from row to row with them. The scroll bar lies over
// the rows' padding, so that their texts keep their room.
class RowsArea final : public QScrollArea {
  public:
    RowsArea() {
        auto *bar = verticalScrollBar();
        bar->setAttribute(Qt::WA_OpaquePaintEvent, false);
        QObject::connect(bar, &QScrollBar::rangeChanged, this, [this, bar](int least, int most) {
            setViewportMargins(mirrored(0, 0, most > least ? -bar->sizeHint().width() : 0, 0));
        });
    }

  protected:
    void keyPressEvent(QKeyEvent *event) override { event->ignore(); }
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
    auto *area = new RowsArea;
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
