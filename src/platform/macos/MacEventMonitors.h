#pragma once

#include "platform/EventMonitors.h"

namespace lumo::macos {

class MacEventMonitors final : public EventMonitors {
  public:
    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;
};

} // namespace lumo::macos
