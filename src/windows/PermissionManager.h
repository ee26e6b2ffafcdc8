#pragma once

#include "platform/Platform.h"
#include "support/Lifetime.h"
#include "support/Published.h"

#include <string_view>

namespace lumo {

class NotificationCenter;

// Posted after every check of the permission, whatever its outcome. Read the state yourself.
inline constexpr std::string_view accessibilityPermissionStatusChanged =
    "accessibilityPermissionStatusChanged";

// Knows whether other applications' windows may be read and raised. Main thread only.
class PermissionManager {
  public:
    // The notification center must outlive the manager.
    PermissionManager(const Platform &platform, NotificationCenter &notificationCenter);
    PermissionManager(const PermissionManager &) = delete;
    PermissionManager &operator=(const PermissionManager &) = delete;

    // The result of the last check; false before the first.
    Published<bool> hasAccessibilityPermission{false};

    // The permission guidance is on screen.
    Published<bool> isShowingGuidance{false};

    // Checks now, without prompting, and posts accessibilityPermissionStatusChanged in a later turn
    // of the main loop.
    void checkPermission();

  private:
    Accessibility &accessibility_;
    MainLoop &mainLoop_;
    NotificationCenter &notificationCenter_;
    Lifetime lifetime_;
};

} // namespace lumo
