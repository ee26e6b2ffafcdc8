#pragma once

#include "platform/HotKeyService.h"
#include "support/Log.h"

namespace lumo::macos {

// The event manager's hot keys.
class MacHotKeys final : public HotKeyService {
  public:
    // The log outlives the object.
    explicit MacHotKeys(const Log &log);

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;

  private:
    const Log &log_;
};

} // namespace lumo::macos
