#pragma once

#include "platform/ViewHost.h"

namespace lumo::macos {

class MacStatusItem;

// Native windows, and a native popover on the status item's button.
class MacViewHost final : public ViewHost {
  public:
    // The status item outlives the object and its popovers.
    explicit MacViewHost(const MacStatusItem &statusItem);

    std::unique_ptr<HostedPopover> makePopover(const HostedView &view,
                                               std::function<void()> onDidClose) override;
    std::unique_ptr<HostedWindow> makeWindow(HostedWindowKind kind, const std::string &title,
                                             const HostedView &view,
                                             std::function<void()> onWillClose) override;

  private:
    const MacStatusItem &statusItem_;
};

} // namespace lumo::macos
