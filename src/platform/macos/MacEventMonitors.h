#pragma once

#include "platform/EventMonitors.h"
#include "platform/macos/logic/LocalMonitors.h"

#include <memory>

namespace lumo::macos {

class MacEventMonitors final : public EventMonitors {
  public:
    MacEventMonitors();

    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;

  private:
    std::shared_ptr<LocalMonitors> local_;
    Handle localEvents_; // hands them to the local monitors
};

} // namespace lumo::macos
