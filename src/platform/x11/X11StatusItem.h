#pragma once

#include "platform/StatusItem.h"
#include "platform/freedesktop/StatusNotifierItem.h"
#include "platform/x11/TrayIcon.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <vector>

namespace lumo::freedesktop {
class SessionBus;
}

namespace lumo::x11 {

class Connection;
class RenderFormats;
class X11Screens;

// The status item on the session bus where a panel listens there, in the system tray otherwise. A
// panel that offers both is taken by its tray if that draws its icons itself: it tells where the
// item is, and there are panels on the bus that keep the right button to themselves.
class X11StatusItem final : public StatusItem {
  public:
    // The arguments outlive the object. Waits for the server.
    X11StatusItem(Connection &connection, const RenderFormats &formats, const X11Screens &screens,
                  MainLoop &mainLoop, freedesktop::SessionBus &bus);

    void setToolTip(const std::string &text) override;
    void setTitle(const StatusTitle &title) override;
    bool isShown() const override { return notifierItem_.hasHost() || trayIcon_.hasTray(); }
    Handle onShownChange(std::function<void()> observer) override;
    Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) override;

  private:
    void choosePlace();

    const X11Screens &screens_;
    freedesktop::StatusNotifierItem notifierItem_;
    TrayIcon trayIcon_;
    Signal<> shownChanged_;
    Signal<StatusItemPlace> clicked_;
    std::vector<Handle> observations_;
};

} // namespace lumo::x11
