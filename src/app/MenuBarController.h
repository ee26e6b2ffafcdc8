#pragma once

#include "platform/Platform.h"
#include "presentation/StatusMenu.h"
#include "presentation/UserInterface.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"

#include <memory>
#include <vector>

namespace lumo {

class AppController;

// The dot in the status area, which shows whether the effect is on, and the popover that a click on
// it opens and closes. Main thread only.
class MenuBarController {
  public:
    // The controller, which owns this object, and the user interface outlive it.
    MenuBarController(const Platform &platform, UserInterface &userInterface,
                      AppController &appController);
    MenuBarController(const MenuBarController &) = delete;
    MenuBarController &operator=(const MenuBarController &) = delete;

    void handleStatusItemClick(const StatusItemPlace &place);

  private:
    void updateTitle();
    StatusMenuActions menuActions();
    void setupPopover();
    void setupBindings();
    void openSettingsLater(SettingsTab tab);

    Platform platform_;
    UserInterface &userInterface_;
    AppController &appController_;
    StatusItem &statusItem_;
    std::unique_ptr<StatusMenu> menu_;
    std::unique_ptr<Popover> popover_;
    Handle clicks_;
    std::vector<Subscription> cancellables_;
    Lifetime lifetime_;
};

} // namespace lumo
