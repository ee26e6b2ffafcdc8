#include "ui/WindowFrame.h"

#include <QCloseEvent>
#include <QCursor>
#include <QDialog>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <utility>

namespace lumo {

namespace {

const QScreen *screenInUse() {
    const auto *screen = QGuiApplication::screenAt(QCursor::pos());
    return screen != nullptr ? screen : QGuiApplication::primaryScreen();
}

Qt::WindowFlags flagsFor(bool isMiniaturizable) {
    const Qt::WindowFlags common = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    return isMiniaturizable ? common | Qt::WindowMinimizeButtonHint : common;
}

} // namespace

QList<QWidget *> withDialogs(QWidget &widget) {
    QList<QWidget *> all{&widget};
    for (auto *dialog : widget.findChildren<QDialog *>()) {
        if (dialog->isVisible()) {
            all.append(dialog);
        }
    }
    return all;
}

WindowFrame::WindowFrame(const QString &title, QWidget *view, bool isMiniaturizable)
    : QWidget(nullptr, flagsFor(isMiniaturizable)) {
    setWindowTitle(title);
    const QSize wanted = view->size();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    const auto *screen = screenInUse();
    const QRect room = screen != nullptr ? screen->availableGeometry() : QRect(QPoint(), wanted);
    setFixedSize(wanted.boundedTo(room.size()));
    move(room.center() - rect().center());

    const auto follow = [this](const QScreen *each) {
        connect(each, &QScreen::geometryChanged, this, &WindowFrame::adoptScale);
    };
    std::ranges::for_each(QGuiApplication::screens(), follow);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
}

void WindowFrame::makeKeyAndOrderFront() {
    // With the dialog that it waits for, which is what the keys are for.
    const auto windows = withDialogs(*this);
    // What is kept on another virtual desktop comes to this one when it is mapped anew.
    if (isVisible() && !windowHandle()->isExposed()) {
        for (auto *window : windows) {
            window->hide();
        }
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    for (auto *window : windows) {
        window->show();
        window->raise();
    }
    windows.last()->activateWindow();
}

// On Wayland, Qt 6.4 draws a window at the scale that its screen had when the window was made.
void WindowFrame::adoptScale() {
    if (!isVisible() || windowHandle()->devicePixelRatio() == screen()->devicePixelRatio()) {
        return;
    }
    const auto windows = withDialogs(*this);
    for (auto *window : windows) {
        window->hide();
        window->windowHandle()->destroy();
    }
    std::ranges::for_each(windows, &QWidget::show);
}

void WindowFrame::closeEvent(QCloseEvent *event) {
    event->accept();
    if (const auto callback = std::exchange(onWillClose, nullptr)) {
        callback();
    }
}

void WindowFrame::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

} // namespace lumo
