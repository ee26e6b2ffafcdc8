#include "ui/GuidedAccessView.h"

#include "platform/Keyboard.h"
#include "platform/MainLoop.h"
#include "platform/StatusItem.h"
#include "platform/Workspace.h"
#include "presentation/Shortcuts.h"
#include "support/Log.h"
#include "ui/Button.h"
#include "ui/Card.h"
#include "ui/Keycaps.h"
#include "ui/Labels.h"
#include "ui/Painting.h"
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
  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        paintProgramIcon(painter, rect());
    }
};

// The dot as it looks in a panel.
class PanelPicture final : public QWidget {
  public:
    PanelPicture() { setFixedSize(width, height); }

  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        constexpr QColor panel(0x33, 0x37, 0x43);
        constexpr QColor neighbour(255, 255, 255, 70);
        constexpr double dotRadius = 4.6;
        constexpr double neighbourRadius = 4;
        constexpr double distance = 18;
        QPainter painter(this);
        paintRounded(painter, rect(), corner::small, panel, palette().color(role::controlBorder));
        const auto disc = [&painter, this](double x, double radius, const QColor &color) {
            const QPointF middle(x, QRectF(rect()).center().y());
            paintRounded(painter,
                         QRectF(middle.x() - radius, middle.y() - radius, 2 * radius, 2 * radius),
                         radius, color);
        };
        const double middle = QRectF(rect()).center().x();
        disc(middle - distance, neighbourRadius, neighbour);
        disc(middle, dotRadius, Qt::white);
        disc(middle + distance, neighbourRadius, neighbour);
    }

  private:
    static constexpr int width = 64;
    static constexpr int height = 22;
};

constexpr double longestDotSearch = 1; // seconds

QLabel *centred(QLabel *label) {
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QVBoxLayout *makeTexts(QWidget *title, std::string_view description) {
    auto *texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(title);
    texts->addWidget(makeNote(description, TextStyle::caption));
    return texts;
}

QWidget *makePermissionRow(const ExplainedSymbol &permission, QPalette::ColorRole color,
                           int padding) {
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
    middle->addWidget(new SymbolView(permission.symbol, iconSize, color), 0, Qt::AlignCenter);
    layout->addWidget(column);
    layout->addLayout(
        makeTexts(makeLabel(permission.title, TextStyle::headline), permission.description), 1);
    return row;
}

// With the picture, if any, at the end of the title's line.
QWidget *makeLine(const FirstStartLine &line, QWidget *picture) {
    constexpr int horizontalPadding = 16;
    constexpr int verticalPadding = 9;
    auto *title = makeRow({makeLabel(line.title, TextStyle::headline)});
    if (picture != nullptr) {
        title->layout()->addWidget(picture);
    }
    auto *row = new QWidget;
    row->setLayout(makeTexts(title, line.description));
    row->layout()->setContentsMargins(horizontalPadding, verticalPadding, horizontalPadding,
                                      verticalPadding);
    return row;
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
    column->setContentsMargins(spacing::page, spacing::section, spacing::page, spacing::section);
    column->setSpacing(spacing::medium);
    column->addStretch();
    addHeader(*column);
    addLines(*column);
    addPermission(*column);
    addButtons(*column);
    column->addStretch();
    showShortcuts();
    keyNameChanges_ = model_.platform.keyboard.onNamesDidChange([this] { showShortcuts(); });
    followDot();
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
    if (words_.symbol.empty()) {
        icon_ = new ProgramIconView;
    }
    auto *picture =
        icon_ != nullptr ? icon_ : new SymbolView(words_.symbol, symbolSize, role::accentText);
    column.addWidget(picture, 0, Qt::AlignHCenter);
    column.addSpacing(spacing::medium);
    column.addWidget(centred(makeLabel("Welcome to Lumo", TextStyle::largeTitle)));
    column.addWidget(centred(
        makeLabel(model_.platform.vocabulary.tagLine, TextStyle::body, role::secondaryText)));
    column.addSpacing(spacing::large);
}

void GuidedAccessView::addLines(QVBoxLayout &column) {
    if (words_.lines.empty()) {
        return;
    }
    auto *card = new Card;
    for (const auto &line : words_.lines) {
        auto *row = makeLine(line, makePicture(line.picture));
        card->addRow(row);
        if (line.picture == FirstStartPicture::dot) {
            dotLine_ = row;
            withoutDotLine_ = makeLine(words_.withoutDot, nullptr);
            card->addRow(withoutDotLine_);
        }
    }
    column.addWidget(card);
}

// Panels and trays answer a moment after the program has asked for them.
void GuidedAccessView::followDot() {
    if (dotLine_ == nullptr) {
        return;
    }
    auto &item = model_.platform.statusItem;
    const auto update = [this, &item] { showDot(item.isShown() || dotSearch_); };
    dotSearch_ = model_.platform.mainLoop.after(longestDotSearch, [this, update] {
        dotSearch_.reset();
        update();
    });
    dotChanges_ = item.onShownChange(update);
    update();
}

void GuidedAccessView::showDot(bool isShown) {
    dotLine_->setVisible(isShown);
    withoutDotLine_->setVisible(!isShown);
    dotLine_->parentWidget()->update(); // which draws the lines between its rows
}

QWidget *GuidedAccessView::makePicture(FirstStartPicture picture) {
    if (picture == FirstStartPicture::dot) {
        return new PanelPicture;
    }
    auto *&keys = picture == FirstStartPicture::toggleKeys ? toggleKeys_ : emergencyKeys_;
    keys = new Keycaps;
    return keys;
}

void GuidedAccessView::addPermission(QVBoxLayout &column) {
    if (!words_.need.empty()) {
        auto *need = centred(makeLabel(words_.need, TextStyle::body));
        need->setWordWrap(true);
        column.addWidget(need);
    }
    permission_ = new Card;
    permission_->addRow(words_.showsGrantedPermission
                            ? makePermissionRow(words_.permission, role::accentText, 14)
                            : makePermissionRow(words_.permission, role::warningText, 9));
    column.addWidget(permission_);
}

void GuidedAccessView::addButtons(QVBoxLayout &column) {
    column.addSpacing(spacing::large);
    if (!words_.openSettings.empty()) {
        auto *open = new Button(words_.openSettings, Button::Kind::prominent, symbol::openLock);
        QObject::connect(open, &QPushButton::clicked, this, [this] { openSystemSettings(); });
        column.addWidget(open);
        open->setFocus();
    }
    QObject::connect(checkAgain_, &QPushButton::clicked, this,
                     [this] { model_.permission.checkPermission(); });
    column.addWidget(checkAgain_);
    if (!words_.begin.empty()) {
        begin_ = new Button(words_.begin, Button::Kind::prominent);
        QObject::connect(begin_, &QPushButton::clicked, this, [this] { model_.begin(); });
        column.addWidget(begin_);
    }
    column.addWidget(state_);
}

void GuidedAccessView::setChecking(bool isChecking) {
    checkAgain_->setSymbol(isChecking ? symbol::progress : symbol::reload);
}

void GuidedAccessView::showShortcuts() {
    const auto show = [this](Keycaps *keycaps, const std::vector<std::string> &keys) {
        QStringList names;
        for (const auto &key : keys) {
            names.append(toQString(key));
        }
        if (keycaps != nullptr) {
            keycaps->setKeys(names, toQString(model_.platform.vocabulary.keySeparator));
        }
    };
    show(toggleKeys_, toggleKeys(model_.platform, model_.settings));
    show(emergencyKeys_, emergencyKeys(model_.platform));
}

void GuidedAccessView::showState(bool isGranted) {
    const bool needsPermission = !isGranted || words_.showsGrantedPermission;
    permission_->setVisible(needsPermission);
    checkAgain_->setVisible(needsPermission);
    state_->setText(isGranted ? toQString(words_.granted) : QString());
    state_->setHidden(words_.granted.empty());
    if (icon_ != nullptr) {
        constexpr QSize large(84, 84);
        constexpr QSize besidePermission(56, 56);
        icon_->setFixedSize(needsPermission ? besidePermission : large);
    }
    if (begin_ != nullptr) {
        begin_->setVisible(isGranted);
        (isGranted ? begin_ : checkAgain_)->setFocus();
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
