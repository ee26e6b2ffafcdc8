#pragma once

#include "presentation/StatusMenu.h"
#include "support/Handle.h"
#include "ui/StatusMenuView.h"

#include <QWidget>
#include <functional>

namespace lumo {

// The window of the popover: without a frame, in front of everything, with all input for itself. It
// asks to be dismissed when the user acts outside of it, presses Escape, or another application
// comes to the front.
class PopoverWindow final : public QWidget {
  public:
    // Round corners need a desktop that blends windows. All references outlive the window.
    PopoverWindow(const Platform &platform, StatusMenu &menu, bool isRounded);

    // May destroy the window.
    std::function<void()> onDismiss;

    void open(const QRect &area);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

  private:
    void grabInput();
    void dismissUnlessJustOpened();

    Platform platform_;
    StatusMenuView *view_;
    bool isPressedOutside_ = false;
    double openedAt_ = 0;
    Handle grabbing_;
    Handle activations_;
    Handle screenChanges_;
};

} // namespace lumo
