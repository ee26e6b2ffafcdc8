#include "ui/Card.h"

#include "ui/Labels.h"
#include "ui/Painting.h"
#include "ui/Switch.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QMouseEvent>
#include <QPainter>

namespace lumo {

namespace {

constexpr int rowMargin = 16;
constexpr int rowPadding = 11;

} // namespace

Card::Card()
    : rows_(new QVBoxLayout(this)) {
    rows_->setContentsMargins(0, 0, 0, 0);
    rows_->setSpacing(0);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

void Card::addRow(QWidget *row) {
    rows_->addWidget(row);
}

void Card::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintRounded(painter, rect(), corner::card, palette().color(role::card),
                 palette().color(role::separator));
    bool isFirst = true;
    for (int index = 0; index < rows_->count(); ++index) {
        const auto *row = rows_->itemAt(index)->widget();
        if (row == nullptr || row->isHidden()) {
            continue;
        }
        if (!isFirst) {
            painter.fillRect(QRect(rowMargin, row->y(), width() - 2 * rowMargin, spacing::hairline),
                             palette().color(role::separator));
        }
        isFirst = false;
    }
}

SettingsRow::SettingsRow(std::string_view title, std::string_view note, QWidget *control)
    : switch_(dynamic_cast<Switch *>(control))
    , lines_(new QVBoxLayout(this))
    , note_(makeNote({})) {
    lines_->setContentsMargins(rowMargin, rowPadding, rowMargin, rowPadding);
    lines_->setSpacing(spacing::small);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(3);
    auto *titleLabel = makeLabel(title, TextStyle::body);
    titleLabel->setWordWrap(true);
    titleLabel->setBuddy(control); // what names a picker for screen readers
    texts->addStretch();
    texts->addWidget(titleLabel);
    texts->addWidget(note_);
    texts->addStretch();
    auto *row = new QHBoxLayout;
    row->setSpacing(spacing::section);
    row->addLayout(texts, 1);
    row->addWidget(control, 0, Qt::AlignVCenter);
    lines_->addLayout(row);
    setNote(note);
}

void SettingsRow::setNote(std::string_view note) {
    note_->setText(toQString(note));
    note_->setHidden(note.empty());
}

void SettingsRow::addLine(QWidget *line) {
    lines_->addWidget(line);
}

// The whole row is a target for the switch at its end.
void SettingsRow::mousePressEvent(QMouseEvent *event) {
    event->setAccepted(switch_ != nullptr && event->button() == Qt::LeftButton);
}

void SettingsRow::mouseReleaseEvent(QMouseEvent *event) {
    if (switch_ != nullptr && event->button() == Qt::LeftButton &&
        rect().contains(event->position().toPoint())) {
        switch_->click();
    }
}

QWidget *makeStack(std::initializer_list<QWidget *> lines) {
    auto *stack = new QWidget;
    auto *layout = new QVBoxLayout(stack);
    layout->setContentsMargins(rowMargin, rowPadding, rowMargin, rowPadding);
    layout->setSpacing(spacing::medium);
    for (auto *line : lines) {
        layout->addWidget(line);
    }
    return stack;
}

QWidget *makeRow(std::initializer_list<QWidget *> widgets) {
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing::medium);
    for (auto *widget : widgets) {
        layout->addWidget(widget);
    }
    layout->addStretch();
    return row;
}

} // namespace lumo
