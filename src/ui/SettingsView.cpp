#include "ui/SettingsView.h"

#include "ui/AppearanceSettingsView.h"
#include "ui/GeneralSettingsView.h"
#include "ui/ListRow.h"
#include "ui/RulesSettingsView.h"
#include "ui/ShortcutsSettingsView.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"
#include "ui/WindowMover.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPainter>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QStyle>
#include <utility>

namespace lumo {

namespace {

std::string_view symbolOf(SettingsTab tab) {
    switch (tab) {
    case SettingsTab::general:
        return symbol::general;
    case SettingsTab::appearance:
        return symbol::appearance;
    case SettingsTab::rules:
        return symbol::rules;
    case SettingsTab::shortcuts:
        return symbol::shortcuts;
    }
    return {};
}

} // namespace

SettingsView::SettingsView(SettingsModel model)
    : model_(std::move(model))
    , sidebar_(new QListWidget)
    , pages_(new QStackedWidget) {
    resize(contentSize);
    new WindowMover(*this);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(makeSidebar());
    row->addWidget(pages_, 1);
    selection_ = model_.selectedTab.subscribe([this](const SettingsTab &tab) { select(tab); });
    QObject::connect(sidebar_, &QListWidget::currentRowChanged, this, [this](int index) {
        if (index >= 0) {
            model_.selectedTab.set(allSettingsTabs.at(static_cast<std::size_t>(index)));
        }
    });
    // A click beside the entries leaves the page, so its entry stays marked.
    QObject::connect(sidebar_, &QListWidget::itemSelectionChanged, this, [this] {
        if (sidebar_->selectedItems().isEmpty()) {
            select(model_.selectedTab.value());
        }
    });
    sidebar_->setFocus();
}

QWidget *SettingsView::makeSidebar() {
    constexpr int margin = 10;
    constexpr int rowHeight = 34;
    dressList(*sidebar_, "Pages");
    auto *rows = new ListRow(sidebar_);
    rows->setRowHeight(rowHeight);
    rows->setSelectionProminent(true);
    sidebar_->setItemDelegate(rows);
    for (const auto tab : allSettingsTabs) {
        auto *item = new QListWidgetItem(toQString(title(tab)), sidebar_);
        const auto name = symbolOf(tab);
        item->setData(ListRow::symbolRole,
                      QByteArray(name.data(), static_cast<qsizetype>(name.size())));
    }
    // No higher than its entries: below them is background, by which the window moves.
    sidebar_->setFixedHeight(rowHeight * sidebar_->count());
    auto *column = new QWidget;
    column->setFixedWidth(sidebarWidth);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(margin, spacing::section, margin, margin);
    layout->addWidget(sidebar_);
    layout->addStretch();
    return column;
}

void SettingsView::select(SettingsTab tab) {
    const auto index = static_cast<std::size_t>(tab);
    const QSignalBlocker quiet(sidebar_);
    sidebar_->setCurrentRow(static_cast<int>(index));
    auto *&page = made_.at(index);
    if (page == nullptr) {
        page = makePage(tab);
        pages_->addWidget(page);
    }
    pages_->setCurrentWidget(page);
}

QWidget *SettingsView::makePage(SettingsTab tab) {
    switch (tab) {
    case SettingsTab::general:
        return new GeneralSettingsView(model_);
    case SettingsTab::appearance:
        return new AppearanceSettingsView(model_);
    case SettingsTab::rules:
        return new RulesSettingsView(model_);
    case SettingsTab::shortcuts:
        return new ShortcutsSettingsView(model_);
    }
    return nullptr;
}

void SettingsView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    const auto side =
        QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, sidebarWidth, height()));
    const auto edge =
        QStyle::visualRect(layoutDirection(), rect(), QRect(sidebarWidth - 1, 0, 1, height()));
    painter.fillRect(rect(), palette().color(role::window));
    painter.fillRect(side, palette().color(role::sidebar));
    painter.fillRect(edge, palette().color(role::separator));
}

} // namespace lumo
