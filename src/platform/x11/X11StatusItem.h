#pragma once

#include "platform/StatusItem.h"
#include "platform/x11/PixelRect.h"
#include "platform/x11/PointSpace.h"
#include "platform/x11/StatusNotifierItem.h"
#include "platform/x11/TrayIcon.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <vector>

namespace lumo::x11 {

class Connection;
class RenderFormats;
class SessionBus;

// The status item on the session bus where a panel listens there, in the system tray otherwise. A
// panel that offers both is taken by its tray: that tells where the item is, and there are panels
// on the bus that keep the right button to themselves.
class X11StatusItem final : public StatusItem {
  public:
    // The point space is asked for whenever one is needed. The other arguments outlive the object.
    // Waits for the server.
    X11StatusItem(Connection &connection, const RenderFormats &formats, SessionBus &bus,
                  std::function<PointSpace()> pointSpace);

    void setToolTip(const std::string &text) override;
    void setTitle(const StatusTitle &title) override;
    Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) override;

  private:
    void choosePlace();

    std::function<PointSpace()> pointSpace_;
    StatusNotifierItem notifierItem_;
    TrayIcon trayIcon_;
    Signal<StatusItemPlace> clicked_;
    std::vector<Handle> observations_;
};

} // namespace lumo::x11
