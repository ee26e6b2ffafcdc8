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
    // A popup is placed by the toolkit and has the keyboard for itself; a window is placed by the
    // desktop, by its title, and is dismissed when it is no longer active.
    enum class Form { popup, window };

    static constexpr const char *title = "Lumo Menu";

    // Round corners need a desktop that blends windows. All references outlive the window.
    PopoverWindow(const Platform &platform, StatusMenu &menu, Form form, bool isRounded);

    // May destroy the window.
    std::function<void()> onDismiss;

    struct Place {
        QRect area;
        QRect item; // where clicks that open and close the popover come from
    };

    // Clicks outside go where they are meant to if handleButton() reports them,
    // and nowhere if not: the window takes the pointer for itself then.
    void open(const Place &place, bool isToldOfButtons);

    // Of Form::window.
    void open();

    // A mouse button went down or up there, on any window: 1 is the left one, 3 the right.
    void handleButton(unsigned button, bool isDown, const QPoint &at);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void grabInput();
    void handleActivation();
    void dismissUnlessActive();
    bool isOtherApplicationInFront() const;

    Platform platform_;
    StatusMenu &menu_;
    const Form form_;
    StatusMenuView *view_;
    Place place_;
    bool isToldOfButtons_ = false;
    bool isPressedOutside_ = false;
    bool isItemPressed_ = false;
    double openedAt_ = 0;
    Handle grabbing_;
    Handle deactivation_; // while it may be over at once
    Handle activations_;
    Handle screenChanges_;
};

} // namespace lumo
