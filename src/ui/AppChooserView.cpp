#include "ui/AppChooserView.h"

#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/ListRow.h"
#include "ui/SearchField.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QListView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace lumo {

namespace {

constexpr QSize chooserSize{440, 460};
constexpr int rowHeight = 44;
constexpr int searchRole = Qt::UserRole + 10;

} // namespace

AppChooserView::AppChooserView(QWidget *window)
    : QDialog(window)
    , search_(new SearchField("Search apps..."))
    , list_(new QListView)
    , identifier_(makeTextField("Or type an app identifier"))
    , add_(new Button("Add"))
    , items_(new QStandardItemModel(this))
    , found_(new QSortFilterProxyModel(this)) {
    setWindowTitle(QStringLiteral("Add App"));
    setWindowModality(Qt::WindowModal);
    setFixedSize(chooserSize);
    found_->setSourceModel(items_);
    found_->setFilterRole(searchRole);
    found_->setFilterCaseSensitivity(Qt::CaseInsensitive);
    auto *rows = new ListRow(list_);
    rows->setRowHeight(rowHeight);
    list_->setAccessibleName(QStringLiteral("Apps"));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setItemDelegate(rows);
    list_->setModel(found_);
    list_->setUniformItemSizes(true);
    list_->setMouseTracking(true);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->viewport()->setAutoFillBackground(false);

    auto *cancel = new Button("Cancel");
    cancel->setAutoDefault(false);
    auto *typed = new QHBoxLayout;
    typed->setSpacing(spacing::medium);
    typed->addWidget(identifier_, 1);
    typed->addWidget(add_);
    typed->addWidget(cancel);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(spacing::large);
    column->addWidget(search_);
    column->addWidget(list_, 1);
    column->addLayout(typed);

    QObject::connect(search_, &QLineEdit::textChanged, found_,
                     [this](const QString &text) { found_->setFilterFixedString(text.trimmed()); });
    QObject::connect(list_, &QListView::activated, this,
                     [this](const QModelIndex &index) { choose(index); });
    QObject::connect(identifier_, &QLineEdit::textChanged, add_,
                     [this](const QString &text) { add_->setEnabled(!text.trimmed().isEmpty()); });
    QObject::connect(add_, &QPushButton::clicked, this, [this] { chooseTyped(); });
    QObject::connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
    // Return adds what was typed, whichever of the buttons had the focus before.
    QObject::connect(identifier_, &QLineEdit::returnPressed, this, [this] { chooseTyped(); });
    add_->setEnabled(false);
    add_->setAutoDefault(false);
}

void AppChooserView::offer(const std::vector<InstalledApplication> &applications) {
    items_->clear();
    for (const auto &application : applications) {
        auto *item = new QStandardItem(toQString(application.localizedName));
        const auto identifier = toQString(application.bundleIdentifier);
        item->setData(identifier, ListRow::detailRole);
        item->setData(item->text() + QLatin1Char('\n') + identifier, searchRole);
        item->setAccessibleDescription(identifier);
        items_->appendRow(item);
    }
    search_->clear();
    identifier_->clear();
    list_->scrollToTop();
    search_->setFocus();
    open();
}

void AppChooserView::choose(const QModelIndex &index) {
    accept();
    onChosen(toUtf8(index.data(ListRow::detailRole).toString()),
             toUtf8(index.data(Qt::DisplayRole).toString()));
}

void AppChooserView::chooseTyped() {
    const auto identifier = identifier_->text().trimmed();
    if (!identifier.isEmpty()) {
        accept();
        onChosen(toUtf8(identifier), {});
    }
}

void AppChooserView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(role::window));
}

} // namespace lumo
