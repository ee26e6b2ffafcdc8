#include "ui/GuidedAccessView.h"

#include "platform/Keyboard.h"
#include "platform/Workspace.h"
#include "presentation/Shortcuts.h"
#include "support/Log.h"
#include "ui/Button.h"
#include "ui/Card.h"
#include "ui/Labels.h"
#include "ui/ProgramIcon.h"
#include "ui/Symbols.h"
#include "ui/Text.h"
#include "ui/Theme.h"
#include "ui/WindowMover.h"
#include "windows/PermissionManager.h"

#include <QHBoxLayout>
#include <QPainter>

namespace lumo {

namespace {

class ProgramIconView final : public QWidget {
  public:
    ProgramIconView() {
        setFixedSize(side, side);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        paintProgramIcon(painter, rect());
    }

  private:
    static constexpr int side = 72;
};

QLabel *centred(QLabel *label) {
    label->setAlignment(Qt::AlignCenter);
    return label;
}

// A symbol with a title and a description beside it, and a control at the end of the row if there
// is one.
struct ExplainedRow {
    QLabel *title;
    QLabel *description;
    QWidget *row;
};

ExplainedRow makeExplainedRow(const ExplainedSymbol &words, QPalette::ColorRole color, int padding,
                              QWidget *control = nullptr) {
    constexpr int iconColumn = 32;
    constexpr int iconSize = 24;
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(mirrored(14, padding, 16, padding));
    layout->setSpacing(spacing::large);
    auto *column = new QWidget;
    column->setFixedWidth(iconColumn);
    auto *middle = new QHBoxLayout(column);
    middle->setContentsMargins(0, 0, 0, 0);
    middle->addWidget(new SymbolView(words.symbol, iconSize, color), 0, Qt::AlignCenter);
    layout->addWidget(column);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(3);
    auto *title = makeLabel(words.title, TextStyle::headline);
    auto *description = makeNote(words.description, TextStyle::caption);
    texts->addWidget(title);
    texts->addWidget(description);
    layout->addLayout(texts, 1);
    if (control != nullptr) {
        layout->addWidget(control);
    }
    return {title, description, row};
}

} // namespace

GuidedAccessView::GuidedAccessView(GuidanceModel model)
    : model_(std::move(model))
    , words_(model_.platform.vocabulary.firstStart)
    , checkAgain_(new Button(words_.checkAgain, Button::Kind::bordered, symbol::reload))
    , state_(centred(makeNote({}))) {
    resize(contentSize);
    new WindowMover(*this);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::page, spacing::page, spacing::page, spacing::section);
    column->setSpacing(spacing::medium);
    column->addStretch();
    addHeader(*column);
    addLines(*column);
    addPermission(*column);
    addButtons(*column);
    column->addStretch();
    showShortcuts();
    keyNameChanges_ = model_.platform.keyboard.onNamesDidChange([this] { showShortcuts(); });
    showState(model_.permission.hasAccessibilityPermission.value());
    permissionChanges_ = model_.permission.hasAccessibilityPermission.subscribeToChanges(
        [this](const bool &isGranted) {
            showState(isGranted);
            if (isGranted && !model_.permission.hasAccessibilityPermission.value()) {
                model_.permission.isShowingGuidance.set(false);
            }
        });
}

void GuidedAccessView::addHeader(QVBoxLayout &column) {
    constexpr int symbolSize = 60;
    QWidget *picture = words_.symbol.empty()
                           ? static_cast<QWidget *>(new ProgramIconView)
                           : new SymbolView(words_.symbol, symbolSize, role::accentText);
    column.addWidget(picture, 0, Qt::AlignHCenter);
    column.addSpacing(spacing::medium);
    column.addWidget(centred(makeLabel("Welcome to Lumo", TextStyle::largeTitle)));
    column.addWidget(centred(
        makeLabel(model_.platform.vocabulary.tagLine, TextStyle::body, role::secondaryText)));
    column.addSpacing(spacing::large);
}

void GuidedAccessView::addLines(QVBoxLayout &column) {
    constexpr int padding = 10;
    if (words_.lines.empty()) {
        return;
    }
    auto *card = new Card;
    for (const auto &line : words_.lines) {
        const auto row = makeExplainedRow(line, role::accentText, padding);
        texts_.emplace_back(row.title, line.title);
        texts_.emplace_back(row.description, line.description);
        card->addRow(row.row);
    }
    column.addWidget(card);
}

void GuidedAccessView::addPermission(QVBoxLayout &column) {
    constexpr int padding = 14;
    if (!words_.need.empty()) {
        auto *need = centred(makeLabel(words_.need, TextStyle::body));
        need->setWordWrap(true);
        column.addWidget(need);
    }
    // Without a page of the settings to open, there is one button, which belongs to the row.
    const bool isAlone = words_.openSettings.empty();
    permission_ = new Card;
    permission_->addRow(makeExplainedRow(words_.permission,
                                         isAlone ? role::warningText : role::accentText, padding,
                                         isAlone ? checkAgain_ : nullptr)
                            .row);
    column.addWidget(permission_);
}

void GuidedAccessView::addButtons(QVBoxLayout &column) {
    column.addSpacing(spacing::large);
    if (!words_.openSettings.empty()) {
        auto *open = new Button(words_.openSettings, Button::Kind::prominent, symbol::openLock);
        QObject::connect(open, &QPushButton::clicked, this, [this] { openSystemSettings(); });
        column.addWidget(open);
        column.addWidget(checkAgain_);
        open->setFocus();
    }
    QObject::connect(checkAgain_, &QPushButton::clicked, this,
                     [this] { model_.permission.checkPermission(); });
    if (!words_.begin.empty()) {
        begin_ = new Button(words_.begin, Button::Kind::prominent);
        QObject::connect(begin_, &QPushButton::clicked, this, [this] { model_.begin(); });
        column.addWidget(begin_);
        begin_->setFocus();
    }
    column.addWidget(state_);
}

void GuidedAccessView::setChecking(bool isChecking) {
    checkAgain_->setSymbol(isChecking ? symbol::progress : symbol::reload);
}

void GuidedAccessView::showShortcuts() {
    for (const auto &[label, text] : texts_) {
        label->setText(toQString(withShortcuts(text, model_.platform, model_.settings)));
    }
}

void GuidedAccessView::showState(bool isGranted) {
    permission_->setVisible(!isGranted || words_.showsGrantedPermission);
    state_->setText(isGranted ? toQString(words_.granted) : QString());
    state_->setHidden(words_.granted.empty());
    if (begin_ != nullptr) {
        begin_->setEnabled(isGranted);
    }
}

void GuidedAccessView::openSystemSettings() {
    if (!model_.platform.workspace.openSystemSettings()) {
        model_.platform.log.print("[Lumo] this desktop has no settings program to open");
        state_->setText(QStringLiteral("This desktop has no settings program to open."));
    }
}

void GuidedAccessView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(role::window));
}

} // namespace lumo
