#include "ui/WindowMover.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace lumo {

WindowMover::WindowMover(QWidget &view)
    : QObject(&view)
    , view_(view) {
    view.installEventFilter(this);
}

// Not by a click alone: a window manager that is late takes the window up after the button was
// released, and has it follow the pointer until the next click.
bool WindowMover::eventFilter(QObject * /*view*/, QEvent *event) {
    const auto *mouse = dynamic_cast<const QMouseEvent *>(event);
    if (mouse == nullptr) {
        return false;
    }
    if (mouse->type() == QEvent::MouseButtonPress && mouse->button() == Qt::LeftButton) {
        pressedAt_ = mouse->globalPosition();
        return true;
    }
    if (mouse->type() != QEvent::MouseMove) {
        pressedAt_.reset();
        return false;
    }
    auto *window = view_.window()->windowHandle();
    if (pressedAt_ && window != nullptr &&
        (mouse->globalPosition() - *pressedAt_).manhattanLength() >=
            QApplication::startDragDistance()) {
        pressedAt_.reset();
        window->startSystemMove();
    }
    return false;
}

} // namespace lumo
