#include "ui/PopoverWindow.h"

#include "platform/MainLoop.h"
#include "platform/Screens.h"
#include "platform/Workspace.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>
#include <utility>

namespace lumo {

PopoverWindow::PopoverWindow(const Platform &platform, StatusMenu &menu, Form form, bool isRounded)
    : QWidget(nullptr, (form == Form::popup ? Qt::Popup : Qt::Window) | Qt::FramelessWindowHint |
                           Qt::NoDropShadowWindowHint)
    , platform_(platform)
    , menu_(menu)
    , form_(form)
    , view_(new StatusMenuView(menu, platform.mainLoop)) {
    setAttribute(Qt::WA_TranslucentBackground, isRounded);
    setWindowTitle(QString::fromLatin1(title));
    setFixedSize(StatusMenuView::contentSize);
    view_->setParent(this);
    view_->setRounded(isRounded);
    view_->move(0, 0);
    activations_ = platform.workspace.onDidActivateApplication([this] { handleActivation(); });
    screenChanges_ = platform.screens.onScreenParametersDidChange([this] { onDismiss(); });
}

void PopoverWindow::open(const Place &place, bool isToldOfButtons) {
    place_ = place;
    isToldOfButtons_ = isToldOfButtons;
    move(place.area.topLeft());
    openedAt_ = platform_.mainLoop.now();
    show();
    view_->setFocus(Qt::PopupFocusReason);
    grabInput();
}

void PopoverWindow::open() {
    show();
    view_->setFocus(Qt::PopupFocusReason);
}

// Input goes to the panel for as long as it grabs the button that opened the popover.
void PopoverWindow::grabInput() {
    constexpr double interval = 0.05;
    auto *handle = windowHandle();
    if (handle == nullptr ||
        (handle->setMouseGrabEnabled(!isToldOfButtons_) && handle->setKeyboardGrabEnabled(true))) {
        grabbing_.reset();
    } else {
        grabbing_ = platform_.mainLoop.after(interval, [this] { grabInput(); });
    }
}

// A panel that takes the focus for the click that opens the popover is no reason to close it, nor
// is the Cover App that the user chooses in it.
void PopoverWindow::handleActivation() {
    constexpr double justOpened = 0.25; // seconds
    if (form_ == Form::window) {
        if (isOtherApplicationInFront() && windowHandle()->isExposed()) {
            dismissUnlessActive();
        }
    } else if (platform_.mainLoop.now() - openedAt_ > justOpened && !menu_.isCoverAppInFront()) {
        onDismiss();
    }
}

void PopoverWindow::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && form_ == Form::window) {
        deactivation_.reset();
        if (!isActiveWindow()) {
            dismissUnlessActive();
        }
    }
}

// The Cover App that the user chooses in it comes to the front a moment later. The toolkit misses
// that the focus moves on while the seat gets its keyboard.
void PopoverWindow::dismissUnlessActive() {
    constexpr double moment = 0.1; // seconds
    deactivation_ = platform_.mainLoop.after(moment, [this] {
        if ((!isActiveWindow() || isOtherApplicationInFront()) && !menu_.isCoverAppInFront()) {
            onDismiss();
        }
    });
}

bool PopoverWindow::isOtherApplicationInFront() const {
    const auto &workspace = platform_.workspace;
    const auto *front = workspace.frontmostApplication();
    return front != nullptr &&
           front->processIdentifier != workspace.ownApplication().processIdentifier;
}

// The item acts when the right button is released on it and closes the popover itself: closed
// before, it would be opened again.
void PopoverWindow::handleButton(unsigned button, bool isDown, const QPoint &at) {
    constexpr unsigned rightButton = 3;
    const bool isOnItem = button == rightButton && place_.item.contains(at);
    if (isDown) {
        isItemPressed_ = isOnItem;
        if (!isOnItem && !geometry().contains(at)) {
            onDismiss();
        }
    } else if (button == rightButton && std::exchange(isItemPressed_, false) && !isOnItem) {
        onDismiss();
    }
}

// With the pointer all its own, it is dismissed when a click outside ends, so that no other client
// gets one half of it.
void PopoverWindow::mousePressEvent(QMouseEvent *event) {
    isPressedOutside_ = !rect().contains(event->position().toPoint());
}

void PopoverWindow::mouseReleaseEvent(QMouseEvent *event) {
    if (event->buttons() == Qt::NoButton && std::exchange(isPressedOutside_, false)) {
        onDismiss();
    }
}

void PopoverWindow::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape) {
        onDismiss();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void PopoverWindow::closeEvent(QCloseEvent *event) {
    QWidget::closeEvent(event);
    onDismiss();
}

} // namespace lumo
