#include "ui/RuleListView.h"

#include "ui/AppChooserView.h"
#include "ui/Button.h"
#include "ui/Labels.h"
#include "ui/RuleRowView.h"
#include "ui/SearchField.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <algorithm>

namespace lumo {

namespace {

constexpr int mostRowsShown = 6;
constexpr int idRole = Qt::UserRole + 10;

} // namespace

// The list, in which the key Delete removes a rule.
class RuleListView::List final : public QListView {
  public:
    explicit List(RuleListView &owner)
        : owner_(owner) {}

  protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
            owner_.removeCurrent();
        } else {
            QListView::keyPressEvent(event);
        }
    }

  private:
    RuleListView &owner_;
};

RuleListView::RuleListView(const Platform &platform, SettingsStore &settings)
    : platform_(platform)
    , settings_(settings)
    , search_(new SearchField("Search apps..."))
    , list_(new List(*this))
    , items_(new QStandardItemModel(this))
    , emptyNote_(makeNote("No rules to show."))
    , bindings_(settings, platform.mainLoop) {
    auto *rows = new RuleRowView(list_);
    rows->onToggle = [this](const QModelIndex &index) { toggle(index); };
    rows->onRemove = [this](const QModelIndex &index) { remove(index); };
    dressList(*list_, "App rules");
    list_->setAccessibleDescription(
        QStringLiteral("Space turns a rule on or off, Delete removes it"));
    list_->setItemDelegate(rows);
    list_->setModel(items_);

    auto *add = new Button("Add App...", Button::Kind::bordered, symbol::add);
    QObject::connect(add, &QPushButton::clicked, this, [this] { chooseApp(); });
    auto *top = new QHBoxLayout;
    top->setContentsMargins(mirrored(12, 0, 12, 0));
    top->setSpacing(spacing::medium);
    top->addWidget(search_, 1);
    top->addWidget(add);
    emptyNote_->setAlignment(Qt::AlignCenter);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(mirrored(4, 12, 4, 8));
    column->setSpacing(spacing::medium);
    column->addLayout(top);
    column->addWidget(emptyNote_);
    column->addWidget(list_);
    QObject::connect(search_, &QLineEdit::textChanged, this, [this] { refresh(); });
    for (auto *rules : {&settings_.whitelist, &settings_.blacklist}) {
        bindings_.follow<std::vector<AppRule>>(*rules,
                                               [this](const auto &) { isOutdated_ = true; });
    }
    bindings_.follow<bool>(settings_.useWhitelistMode,
                           [this](const bool &) { isOutdated_ = true; });
    bindings_.whenSettled([this] {
        if (isOutdated_) {
            refresh();
        }
    });
}

RuleListView::~RuleListView() {
    delete chooser_;
}

void RuleListView::refresh() {
    isOutdated_ = false;
    // As high as the rules need, and the same while they are searched.
    const auto &rules = rulesInForce(settings_).value();
    const int height =
        RuleRowView::height * std::clamp(static_cast<int>(rules.size()), 1, mostRowsShown);
    list_->setFixedHeight(height);
    emptyNote_->setFixedHeight(height);
    showRules(RuleList(rulesInForce(settings_)).matching(toUtf8(search_->text())));
}

// Rows stay in place where the same rules are shown, so that switching one neither scrolls the list
// nor moves its current row.
void RuleListView::showRules(const std::vector<AppRule> &rules) {
    const int count = static_cast<int>(rules.size());
    const int position = list_->verticalScrollBar()->value();
    if (items_->rowCount() > count) {
        items_->removeRows(count, items_->rowCount() - count);
    }
    for (int row = 0; row < count; ++row) {
        const auto &rule = rules[static_cast<std::size_t>(row)];
        if (row == items_->rowCount()) {
            items_->appendRow(new QStandardItem);
        }
        auto *item = items_->item(row);
        item->setText(toQString(rule.displayName));
        item->setData(toQString(rule.bundleID), ListRow::detailRole);
        item->setAccessibleDescription(toQString(rule.bundleID));
        item->setData(toQString(rule.id), idRole);
        item->setCheckable(true);
        item->setCheckState(rule.isEnabled ? Qt::Checked : Qt::Unchecked);
    }
    list_->verticalScrollBar()->setValue(position);
    emptyNote_->setVisible(count == 0);
    list_->setVisible(count > 0);
}

void RuleListView::toggle(const QModelIndex &index) {
    const auto id = toUtf8(index.data(idRole).toString());
    const bool isOn = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    RuleList(rulesInForce(settings_)).setEnabled(id, !isOn);
}

void RuleListView::remove(const QModelIndex &index) {
    RuleList(rulesInForce(settings_)).remove(toUtf8(index.data(idRole).toString()));
}

void RuleListView::removeCurrent() {
    if (list_->currentIndex().isValid()) {
        remove(list_->currentIndex());
    }
}

// The user sees where the rule is, whatever was searched for before.
void RuleListView::addRule(const std::string &bundleID, const std::string &name) {
    const auto id = RuleList(rulesInForce(settings_)).add(bundleID, name);
    if (!id) {
        return;
    }
    search_->clear();
    refresh();
    const auto rows = items_->match(items_->index(0, 0), idRole, toQString(*id), 1,
                                    Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (!rows.isEmpty()) {
        list_->setCurrentIndex(rows.first());
        list_->scrollTo(rows.first());
        list_->setFocus(Qt::OtherFocusReason);
    }
}

void RuleListView::chooseApp() {
    if (chooser_ == nullptr) {
        chooser_ = new AppChooserView(window());
        chooser_->onChosen = [this](const std::string &bundleID, const std::string &name) {
            addRule(bundleID, name);
        };
    }
    chooser_->offer(ruleCandidates(platform_.workspace, rulesInForce(settings_).value()));
}

} // namespace lumo
