#pragma once

#include "platform/StatusItem.h"
#include "platform/freedesktop/StatusNotifierItem.h"
#include "support/Handle.h"

#include <functional>
#include <string>
#include <utility>

namespace lumo::wayland {

class WaylandScreens;

// The status item by way of the session bus alone: panels of Wayland sessions know no other.
class WaylandStatusItem final : public StatusItem {
  public:
    // Both outlive the object.
    WaylandStatusItem(freedesktop::SessionBus &bus, const WaylandScreens &screens);

    void setToolTip(const std::string &text) override { notifierItem_.setToolTip(text); }
    void setTitle(const StatusTitle &title) override { notifierItem_.setTitle(title); }
    bool isShown() const override { return notifierItem_.hasHost(); }
    Handle onShownChange(std::function<void()> observer) override {
        return notifierItem_.onHostChange(std::move(observer));
    }
    Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) override;

  private:
    const WaylandScreens &screens_;
    freedesktop::StatusNotifierItem notifierItem_;
};

} // namespace lumo::wayland
