#include "ui/AppChooserView.h"

#include "presentation/RuleList.h"
#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/ListRow.h"
#include "ui/SearchField.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace lumo {

namespace {

constexpr QSize chooserSize{440, 460};
constexpr int appRowHeight = 44;
constexpr int searchRole = Qt::UserRole + 10;

} // namespace

AppChooserView::AppChooserView(QWidget *window)
    : QDialog(window)
    , search_(new SearchField("Search apps..."))
    , list_(new QListView)
    , nothingFound_(makeNote("No apps found."))
    , identifier_(makeTextField("Or type an app identifier"))
    , judgement_(makeNote("An identifier has no spaces or slashes, as org.example.App."))
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
    rows->setRowHeight(appRowHeight);
    dressList(*list_, "Apps");
    list_->setItemDelegate(rows);
    list_->setModel(found_);
    nothingFound_->setAlignment(Qt::AlignCenter);
    nothingFound_->hide();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(spacing::large);
    column->addWidget(search_);
    column->addWidget(nothingFound_, 1);
    column->addWidget(list_, 1);
    column->addWidget(makeTypedRow());

    QObject::connect(search_, &QLineEdit::textChanged, this,
                     [this](const QString &text) { search(text); });
    QObject::connect(search_, &QLineEdit::returnPressed, this, [this] { chooseFirst(); });
    QObject::connect(list_, &QListView::activated, this,
                     [this](const QModelIndex &index) { choose(index); });
}

QWidget *AppChooserView::makeTypedRow() {
    auto *cancel = new Button("Cancel");
    // Return is the text fields' own, whichever of the buttons had the focus before.
    cancel->setAutoDefault(false);
    add_->setAutoDefault(false);
    auto *typed = new QWidget;
    auto *rows = new QVBoxLayout(typed);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(spacing::small);
    auto *fields = new QHBoxLayout;
    fields->setSpacing(spacing::medium);
    fields->addWidget(identifier_, 1);
    fields->addWidget(add_);
    fields->addWidget(cancel);
    rows->addLayout(fields);
    rows->addWidget(judgement_);
    QObject::connect(identifier_, &QLineEdit::textChanged, this,
                     [this](const QString &text) { judgeTyped(text); });
    QObject::connect(identifier_, &QLineEdit::returnPressed, this, [this] { chooseTyped(); });
    QObject::connect(add_, &QPushButton::clicked, this, [this] { chooseTyped(); });
    QObject::connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
    judgeTyped({});
    return typed;
}

void AppChooserView::offer(const std::vector<InstalledApplication> &applications) {
    items_->clear();
    search_->clear();
    identifier_->clear();
    for (const auto &application : applications) {
        auto *item = new QStandardItem(toQString(application.localizedName));
        const auto identifier = toQString(application.bundleIdentifier);
        item->setData(identifier, ListRow::detailRole);
        item->setData(item->text() + QLatin1Char('\n') + identifier, searchRole);
        item->setAccessibleDescription(identifier);
        items_->appendRow(item);
    }
    search({});
    list_->scrollToTop();
    search_->setFocus();
    open();
}

void AppChooserView::search(const QString &text) {
    found_->setFilterFixedString(text.trimmed());
    const bool isEmpty = found_->rowCount() == 0;
    list_->setVisible(!isEmpty);
    nothingFound_->setVisible(isEmpty);
}

// Only of what was searched for: without a search the first row is not what the user means.
void AppChooserView::chooseFirst() {
    if (!search_->text().trimmed().isEmpty() && found_->rowCount() > 0) {
        choose(found_->index(0, 0));
    }
}

void AppChooserView::choose(const QModelIndex &index) {
    accept();
    onChosen(toUtf8(index.data(ListRow::detailRole).toString()),
             toUtf8(index.data(Qt::DisplayRole).toString()));
}

void AppChooserView::judgeTyped(const QString &text) {
    const bool isGood = isBundleIdentifier(toUtf8(text));
    add_->setEnabled(isGood);
    judgement_->setVisible(!isGood && !text.trimmed().isEmpty());
}

void AppChooserView::chooseTyped() {
    const auto identifier = toUtf8(identifier_->text().trimmed());
    if (isBundleIdentifier(identifier)) {
        accept();
        onChosen(identifier, {});
    }
}

void AppChooserView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Down && search_->hasFocus() && found_->rowCount() > 0) {
        list_->setFocus(Qt::TabFocusReason);
        list_->setCurrentIndex(found_->index(0, 0));
    } else {
        QDialog::keyPressEvent(event);
    }
}

void AppChooserView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(role::window));
}

} // namespace lumo
