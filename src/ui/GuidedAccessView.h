#pragma once

#include "platform/Platform.h"
#include "support/Published.h"

#include <QWidget>
#include <string_view>

class QLabel;

namespace lumo {

class Button;
class PermissionManager;

// A permission that the program needs, and what for.
struct PermissionRow {
    std::string_view icon; // a symbol's name
    std::string_view title;
    std::string_view description;
};

// Explains the one permission that the program needs, and lets the user check it again. Never
// closes its window.
class GuidedAccessView final : public QWidget {
  public:
    static constexpr QSize contentSize{400, 480};

    // The manager outlives the view.
    GuidedAccessView(const Platform &platform, PermissionManager &permissionManager);

    // While checking, the button for it shows progress in place of its symbol.
    void setChecking(bool isChecking);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    void openSystemSettings();
    void showState(bool isGranted);

    Platform platform_;
    PermissionManager &permissionManager_;
    Button *recheck_;
    QLabel *state_;
    Subscription permission_;
};

} // namespace lumo
