#pragma once

#include "presentation/StatusMenu.h"
#include "support/Handle.h"
#include "ui/StatusMenuView.h"

#include <QWidget>
#include <functional>

namespace lumo {

// The window of the popover: without a frame, in front of everything, with the keyboard for itself.
// It asks to be dismissed when the user acts outside of it, presses Escape, or another application
// comes to the front, unless it is the Cover App.
class PopoverWindow final : public QWidget {
  public:
    // Round corners need a desktop that blends windows. All references outlive the window.
    PopoverWindow(const Platform &platform, StatusMenu &menu, bool isRounded);

    // May destroy the window.
    std::function<void()> onDismiss;

    struct Place {
        QRect area;
        QRect item; // where clicks that open and close the popover come from
    };

    // Clicks outside go where they are meant to if handleButton() reports them,
    // and nowhere if not: the window takes the pointer for itself then.
    void open(const Place &place, bool isToldOfButtons);

    // A mouse button went down or up there, on any window: 1 is the left one, 3 the right.
    void handleButton(unsigned button, bool isDown, const QPoint &at);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

  private:
    void grabInput();
    void handleActivation();

    Platform platform_;
    StatusMenu &menu_;
    StatusMenuView *view_;
    Place place_;
    bool isToldOfButtons_ = false;
    bool isPressedOutside_ = false;
    bool isItemPressed_ = false;
    double openedAt_ = 0;
    Handle grabbing_;
    Handle activations_;
    Handle screenChanges_;
};

} // namespace lumo
