#include "ui/StatusMenuView.h"

#include "ui/Button.h"
#include "ui/CoverAppsView.h"
#include "ui/Labels.h"
#include "ui/MenuItemView.h"
#include "ui/MenuPage.h"
#include "ui/MenuRow.h"
#include "ui/Painting.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"
#include "ui/ToggleRowView.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QPainter>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace lumo {

namespace {

constexpr int headerHeight = 26;
constexpr int mostNoticeLines = 2;
constexpr int mostTextLines = 2; // of a subtitle without names, which may be of any length

} // namespace

class StatusMenuView::StateDot final : public QWidget {
  public:
    StateDot() { setFixedSize(8, 8); }

    void setOn(bool isOn) {
        if (isOn != isOn_) {
            isOn_ = isOn;
            update();
        }
    }

  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        paintRounded(painter, rect(), width() / 2.0, isOn_ ? dotWhenOn : dotWhenOff);
    }

  private:
    bool isOn_ = false;
};

StatusMenuView::StatusMenuView(StatusMenu &menu, MainLoop &mainLoop)
    : menu_(menu)
    , pages_(new QStackedWidget)
    , coverApps_(new CoverAppsView(menu))
    , bindings_(menu.settings(), mainLoop) {
    setFixedSize(contentSize);
    setAccessibleName(QStringLiteral("Lumo"));
    setFocusPolicy(Qt::ClickFocus); // has the focus until the user goes to a row
    auto *column = menuPage::makeColumn(this);
    column->setContentsMargins(1, 1, 1, 1);
    pages_->addWidget(makeMainPage());
    pages_->addWidget(makeSettingsPage());
    pages_->addWidget(coverApps_);
    column->addWidget(pages_);
    changes_ = menu_.onChange([this] { refresh(); });
    refresh();
    setFocus();
}

QWidget *StatusMenuView::makeNotice() {
    notice_ = new QWidget;
    auto *row = new QHBoxLayout(notice_);
    row->setContentsMargins(
        mirrored(menuRow::horizontalPadding, spacing::small, spacing::small, spacing::small));
    row->setSpacing(6);
    noticeSymbol_ = new SymbolView(symbol::warning, 14, role::warningText);
    noticeText_ = new ElidedLabel(TextStyle::caption, role::text, mostNoticeLines);
    fixCover_ = new Button("Fix Now", Button::Kind::borderless);
    QFont font = fontOf(TextStyle::caption);
    font.setWeight(QFont::Medium);
    fixCover_->setFont(font);
    QObject::connect(fixCover_, &QPushButton::clicked, this, [this] { menu_.fixCover(); });
    row->addWidget(noticeSymbol_);
    row->addWidget(noticeText_, 1);
    row->addWidget(fixCover_);
    return notice_;
}

QWidget *StatusMenuView::makeMainPage() {
    auto *page = new QWidget;
    auto *column = menuPage::makeColumn(page);
    auto *header = new QWidget;
    header->setFixedHeight(headerHeight);
    auto *headerRow = new QHBoxLayout(header);
    headerRow->setContentsMargins(menuRow::horizontalPadding, spacing::small,
                                  menuRow::horizontalPadding, 0);
    dot_ = new StateDot;
    header_ = makeLabel({}, TextStyle::bodyMedium);
    headerRow->setSpacing(7);
    headerRow->addWidget(dot_);
    headerRow->addWidget(header_, 1);
    column->addWidget(header);
    column->addWidget(makeNotice());

    // Each action may close the popover, and this view goes with it a turn later.
    const auto row = [this](std::string_view title,
                            std::function<void()> StatusMenuActions::*action) {
        return new MenuItemView(title, [this, action] { (menu_.actions().*action)(); });
    };
    toggle_ = row({}, &StatusMenuActions::onToggle);
    peek_ = row("Peek Mode", &StatusMenuActions::onPeek);
    peek_->setSubtitle("Temporary reveal (does not turn Lumo off)", mostTextLines);
    setCover_ = row("Set Cover to Frontmost", &StatusMenuActions::onSetCoverFromFrontmost);
    chooseCover_ = new MenuItemView("Choose Cover App", [this] { menu_.chooseCoverApp(); });
    std::vector<QWidget *> rows{toggle_, peek_, setCover_, chooseCover_};
    if (menu_.canCheckForUpdates()) {
        rows.push_back(row("Check for Updates", &StatusMenuActions::onCheckForUpdates));
    }
    rows.push_back(new MenuItemView("Settings", [this] { menu_.showSettings(); }));
    rows.push_back(row("Quit Lumo", &StatusMenuActions::onQuit));
    column->addWidget(menuPage::makeRows(rows), 1);
    return page;
}

QWidget *StatusMenuView::makeSettingsPage() {
    auto *page = new QWidget;
    auto *column = menuPage::makeColumn(page);
    column->addWidget(menuPage::makeBackHeader("Settings", [this] { menu_.showMain(); }));
    column->addWidget(menuPage::makeDivider());
    privacyCover_ = new ToggleRowView("Privacy Cover");
    bindings_.bind(*privacyCover_, menu_.settings().privacyCoverEnabled);
    auto *shake = new ToggleRowView("Shake to Toggle");
    shake->setSubtitle("Move the mouse left and right four times");
    bindings_.bind(*shake, menu_.settings().mouseShakeToggleEnabled);
    shortcuts_ = new MenuItemView("Keyboard Shortcuts", [this] { menu_.actions().onShortcuts(); });
    column->addWidget(
        menuPage::makeRows(
            {privacyCover_, shake, shortcuts_,
             new MenuItemView("Open Full Settings...", [this] { menu_.actions().onSettings(); })}),
        1);
    return page;
}

void StatusMenuView::refresh() {
    dot_->setOn(menu_.isOn());
    header_->setText(toQString(menu_.header()));
    toggle_->setTitle(menu_.toggleTitle());
    toggle_->setShortcut(menu_.toggleShortcutLabel());
    peek_->setShortcut(menu_.peekShortcutLabel());
    setCover_->setSubtitle(menu_.setCoverSubtitle());
    setCover_->setShortcut(menu_.setCoverShortcutLabel());
    chooseCover_->setSubtitle(menu_.chooseCoverSubtitle());
    privacyCover_->setSubtitle(menu_.privacyCoverSummary());
    shortcuts_->setSubtitle(menu_.shortcutSummary(), mostTextLines);
    refreshNotice();
    coverApps_->refresh();
    showPage();
}

void StatusMenuView::refreshNotice() {
    const auto notice = menu_.coverNotice();
    const bool isWarning = notice == StatusMenu::CoverNotice::warning;
    fixCover_->setVisible(isWarning);
    notice_->setVisible(notice != StatusMenu::CoverNotice::none);
    noticeSymbol_->setSymbol(isWarning ? symbol::warning : symbol::info,
                             isWarning ? role::warningText : role::accentText);
    noticeText_->setFullText(toQString(menu_.coverNoticeText()));
}

void StatusMenuView::showPage() {
    const int page = static_cast<int>(menu_.page());
    if (page == pages_->currentIndex()) {
        return;
    }
    const bool hasKeyboard = window()->testAttribute(Qt::WA_KeyboardFocusChange);
    pages_->setCurrentIndex(page);
    if (menu_.page() == StatusMenu::Page::coverApps) {
        coverApps_->startAtTop();
    }
    setFocus(Qt::OtherFocusReason);
    if (hasKeyboard) {
        moveFocus(1);
    }
}

void StatusMenuView::setRounded(bool isRounded) {
    isRounded_ = isRounded;
    update();
}

void StatusMenuView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    paintRounded(painter, rect(), isRounded_ ? corner::card : 0, palette().color(role::card),
                 palette().color(role::controlBorder));
}

// The rows of the page one can go to, from top to bottom; from none, forwards to the first and
// backwards to the last.
void StatusMenuView::moveFocus(int step) {
    QList<QWidget *> rows;
    for (auto *widget : pages_->currentWidget()->findChildren<QWidget *>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isEnabled() &&
            widget->isVisibleTo(this)) {
            rows.append(widget);
        }
    }
    std::ranges::stable_sort(
        rows, {}, [this](const QWidget *row) { return row->mapTo(this, QPoint(0, 0)).y(); });
    if (rows.isEmpty()) {
        return;
    }
    const auto current = rows.indexOf(focusWidget());
    const auto count = rows.size();
    const auto next = current < 0 ? (step > 0 ? 0 : count - 1) : (current + step + count) % count;
    focusRow(*rows.at(next));
}

void StatusMenuView::focusRow(QWidget &row) {
    row.setFocus(Qt::TabFocusReason);
    if (auto *list = qobject_cast<QListView *>(&row);
        list != nullptr && !list->currentIndex().isValid()) {
        list->setCurrentIndex(list->model()->index(0, 0));
    }
    for (auto *ancestor = row.parentWidget(); ancestor != nullptr && ancestor != this;
         ancestor = ancestor->parentWidget()) {
        if (auto *area = qobject_cast<QScrollArea *>(ancestor)) {
            area->ensureWidgetVisible(&row, 0, spacing::small);
        }
    }
}

void StatusMenuView::keyPressEvent(QKeyEvent *event) {
    const int backKey = isRightToLeft() ? Qt::Key_Right : Qt::Key_Left;
    if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up) {
        moveFocus(event->key() == Qt::Key_Down ? 1 : -1);
    } else if (event->key() == backKey && menu_.page() != StatusMenu::Page::main) {
        menu_.showMain();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace lumo
