#include "ui/CoverAppsView.h"

#include "ui/ListRow.h"
#include "ui/MenuItemView.h"
#include "ui/MenuPage.h"
#include "ui/MenuRow.h"
#include "ui/Text.h"

#include <QListView>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <cstddef>

namespace lumo {

namespace {

constexpr int listHeight = 260; // at most
constexpr int coverRowHeight = 30;

void setChosen(QStandardItem &item, bool isChosen) {
    item.setCheckState(isChosen ? Qt::Checked : Qt::Unchecked);
}

} // namespace

CoverAppsView::CoverAppsView(StatusMenu &menu)
    : menu_(menu)
    , list_(new QListView)
    , items_(new QStandardItemModel(this)) {
    auto *column = menuPage::makeColumn(this);
    column->addWidget(menuPage::makeBackHeader("Choose Cover App", [this] { menu_.showMain(); }));
    column->addWidget(menuPage::makeDivider());
    column->addWidget(new MenuItemView("Clear selected cover app",
                                       [this] { menu_.selectCoverApp(std::nullopt); }));
    column->addWidget(menuPage::makeDivider());
    column->addWidget(makeList(), 1);
}

QWidget *CoverAppsView::makeList() {
    auto *rows = new ListRow(list_);
    rows->setRowHeight(coverRowHeight);
    rows->setHighlightInset(menuRow::highlightInset);
    dressList(*list_, "Running apps");
    list_->setMaximumHeight(listHeight);
    list_->setItemDelegate(rows);
    list_->setModel(items_);
    QObject::connect(list_, &QListView::activated, this,
                     [this](const QModelIndex &index) { choose(index.row()); });
    return list_;
}

// The list is made anew only when it differs, so that it neither scrolls nor loses its current row
// under the user.
void CoverAppsView::refresh() {
    const auto &apps = menu_.runningApps();
    if (items_->rowCount() == 0 || apps != shownApps_) {
        shownApps_ = apps;
        items_->clear();
        items_->appendRow(new QStandardItem(QStringLiteral("None")));
        for (const auto &app : apps) {
            items_->appendRow(new QStandardItem(toQString(app.displayName)));
        }
    }
    for (int row = 1; row < items_->rowCount(); ++row) {
        const bool isCover = menu_.isCoverApp(shownApps_[static_cast<std::size_t>(row) - 1]);
        setChosen(*items_->item(row), isCover);
    }
    setChosen(*items_->item(0), !menu_.hasCoverApp());
}

void CoverAppsView::startAtTop() {
    list_->scrollToTop();
    list_->setCurrentIndex({});
}

void CoverAppsView::choose(int row) {
    if (row <= 0) {
        menu_.selectCoverApp(std::nullopt);
    } else {
        menu_.selectCoverApp(shownApps_.at(static_cast<std::size_t>(row) - 1));
    }
}

} // namespace lumo
