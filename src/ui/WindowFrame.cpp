#include "ui/WindowFrame.h"

#include <QCloseEvent>
#include <QCursor>
#include <QDialog>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
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
