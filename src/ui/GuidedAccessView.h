#pragma once

#include "platform/Vocabulary.h"
#include "presentation/UserInterface.h"
#include "support/Handle.h"

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace lumo {

class Button;
class Card;
class Keycaps;

// The page of the first start, in the desktop's own words: what the program does, the one
// permission that it needs, which the user can check again, and a button to begin. Never closes its
// window by itself.
class GuidedAccessView final : public QWidget {
  public:
    static constexpr QSize contentSize{400, 480};

    explicit GuidedAccessView(GuidanceModel model);

    // While checking, the button for it shows progress in place of its symbol.
    void setChecking(bool isChecking);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    void addHeader(QVBoxLayout &column);
    void addLines(QVBoxLayout &column);
    QWidget *makePicture(FirstStartPicture picture);
    void addPermission(QVBoxLayout &column);
    void addButtons(QVBoxLayout &column);
    void showShortcuts();
    void followDot();
    void showDot(bool isShown);
    void showState(bool isGranted);
    void openSystemSettings();

    GuidanceModel model_;
    const FirstStartWords &words_;
    QWidget *icon_ = nullptr;       // the program's; null where a symbol stands for it
    Keycaps *toggleKeys_ = nullptr; // null where no line shows them
    Keycaps *emergencyKeys_ = nullptr;
    QWidget *dotLine_ = nullptr; // null where no line shows the dot
    QWidget *withoutDotLine_ = nullptr;
    Card *permission_ = nullptr;
    Button *checkAgain_;
    Button *begin_ = nullptr; // null where there is none
    QLabel *state_;
    Subscription permissionChanges_;
    Handle keyNameChanges_;
    Handle dotChanges_;
    Handle dotSearch_; // while the desktop may still come to show it
};

} // namespace lumo
