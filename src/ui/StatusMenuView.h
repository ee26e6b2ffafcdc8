#pragma once

#include "presentation/StatusMenu.h"
#include "support/Handle.h"
#include "ui/Binding.h"

#include <QWidget>

class QLabel;
class QStackedWidget;

namespace lumo {

class Button;
class CoverAppsView;
class ElidedLabel;
class MenuItemView;
class SymbolView;
class ToggleRowView;

// What the popover shows: three pages, of which one is there at a time. Follows the menu.
class StatusMenuView final : public QWidget {
  public:
    static constexpr QSize contentSize{260, 300};

    // The menu and the main loop outlive the view.
    StatusMenuView(StatusMenu &menu, MainLoop &mainLoop);

    // Whether the desktop blends windows, so that the corners may be round.
    void setRounded(bool isRounded);

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    class StateDot;

    QWidget *makeMainPage();
    QWidget *makeSettingsPage();
    QWidget *makeNotice();
    void refresh();
    void refreshNotice();
    void showPage();
    void moveFocus(int step);
    void focusRow(QWidget &row);

    StatusMenu &menu_;
    bool isRounded_ = false;
    QStackedWidget *pages_;
    CoverAppsView *coverApps_;
    StateDot *dot_ = nullptr;
    QLabel *header_ = nullptr;
    QWidget *notice_ = nullptr;
    SymbolView *noticeSymbol_ = nullptr;
    ElidedLabel *noticeText_ = nullptr;
    Button *fixCover_ = nullptr;
    MenuItemView *toggle_ = nullptr;
    MenuItemView *peek_ = nullptr;
    MenuItemView *setCover_ = nullptr;
    MenuItemView *chooseCover_ = nullptr;
    MenuItemView *shortcuts_ = nullptr;
    ToggleRowView *privacyCover_ = nullptr;
    Bindings bindings_;
    Handle changes_;
};

} // namespace lumo
