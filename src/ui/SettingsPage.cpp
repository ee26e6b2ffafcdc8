#include "ui/SettingsPage.h"

#include "ui/Card.h"
#include "ui/Labels.h"
#include "ui/Theme.h"

namespace lumo {

SettingsPage::SettingsPage(std::string_view title) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto *content = new QWidget;
    column_ = new QVBoxLayout(content);
    column_->setContentsMargins(spacing::page, spacing::section, spacing::page, spacing::section);
    column_->setSpacing(spacing::large);
    column_->addWidget(makeLabel(title, TextStyle::title));
    column_->addSpacing(spacing::small);
    column_->addStretch();
    setWidget(content);
    content->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

void SettingsPage::add(QWidget *widget) {
    column_->insertWidget(column_->count() - 1, widget);
}

Card *SettingsPage::addCard() {
    auto *card = new Card;
    add(card);
    return card;
}

void SettingsPage::addHeading(std::string_view text) {
    auto *heading = makeLabel(text, TextStyle::headline);
    heading->setContentsMargins(0, spacing::medium, 0, 0);
    add(heading);
}

void SettingsPage::addFooter(QWidget *widget) {
    column_->addWidget(widget);
}

} // namespace lumo
