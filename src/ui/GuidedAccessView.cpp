#include "ui/GuidedAccessView.h"

#include "platform/Workspace.h"
#include "support/Log.h"
#include "ui/Button.h"
#include "ui/Card.h"
#include "ui/Labels.h"
#include "ui/Symbols.h"
#include "ui/Theme.h"
#include "ui/WindowMover.h"
#include "windows/PermissionManager.h"

#include <QHBoxLayout>
#include <QPainter>

namespace lumo {

namespace {

QLabel *centred(QLabel *label) {
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QWidget *makePermissionRow(const PermissionRow &permission) {
    constexpr int iconColumn = 32;
    constexpr int iconSize = 24;
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(mirrored(14, 14, 16, 14));
    layout->setSpacing(spacing::large);
    auto *column = new QWidget;
    column->setFixedWidth(iconColumn);
    auto *middle = new QHBoxLayout(column);
    middle->setContentsMargins(0, 0, 0, 0);
    middle->addWidget(new SymbolView(permission.icon, iconSize, role::accentText), 0,
                      Qt::AlignCenter);
    layout->addWidget(column);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(makeLabel(permission.title, TextStyle::headline));
    texts->addWidget(makeNote(permission.description, TextStyle::caption));
    layout->addLayout(texts, 1);
    return row;
}

} // namespace

GuidedAccessView::GuidedAccessView(const Platform &platform, PermissionManager &permissionManager)
    : platform_(platform)
    , permissionManager_(permissionManager)
    , recheck_(new Button("I Granted Access, Continue", Button::Kind::bordered, symbol::reload))
    , state_(centred(makeNote({}))) {
    resize(contentSize);
    new WindowMover(*this);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::page, spacing::page, spacing::page, spacing::section);
    column->setSpacing(spacing::medium);
    column->addStretch();
    column->addWidget(new SymbolView(symbol::raisedHand, 60, role::accentText), 0,
                      Qt::AlignHCenter);
    column->addSpacing(spacing::medium);
    column->addWidget(centred(makeLabel("Welcome to Lumo", TextStyle::largeTitle)));
    column->addWidget(
        centred(makeLabel("Focus and privacy for your Mac", TextStyle::body, role::secondaryText)));
    column->addSpacing(spacing::large);
    auto *need =
        centred(makeLabel("Lumo needs the following permission to work:", TextStyle::body));
    need->setWordWrap(true);
    column->addWidget(need);
    const PermissionRow accessibility{
        symbol::pointingHand, "Accessibility Permission",
        "Used to detect the active window and apply the focus effect correctly."};
    auto *card = new Card;
    card->addRow(makePermissionRow(accessibility));
    column->addWidget(card);
    column->addSpacing(spacing::large);
    auto *open = new Button("Open System Settings", Button::Kind::prominent, symbol::openLock);
    QObject::connect(open, &QPushButton::clicked, this, [this] { openSystemSettings(); });
    QObject::connect(recheck_, &QPushButton::clicked, this,
                     [this] { permissionManager_.checkPermission(); });
    column->addWidget(open);
    column->addWidget(recheck_);
    column->addWidget(state_);
    column->addStretch();
    showState(permissionManager_.hasAccessibilityPermission.value());
    permission_ = permissionManager_.hasAccessibilityPermission.subscribeToChanges(
        [this](const bool &isGranted) {
            showState(isGranted);
            if (isGranted && !permissionManager_.hasAccessibilityPermission.value()) {
                permissionManager_.isShowingGuidance.set(false);
            }
        });
    open->setFocus();
}

void GuidedAccessView::setChecking(bool isChecking) {
    recheck_->setSymbol(isChecking ? symbol::progress : symbol::reload);
}

void GuidedAccessView::showState(bool isGranted) {
    state_->setText(isGranted ? QStringLiteral("Access is granted. Close this window to start.")
                              : QString());
}

void GuidedAccessView::openSystemSettings() {
    if (!platform_.workspace.openSystemSettings()) {
        platform_.log.print("[Lumo] this desktop has no settings program to open");
        state_->setText(QStringLiteral("This desktop has no settings program to open."));
    }
}

void GuidedAccessView::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(role::window));
}

} // namespace lumo
