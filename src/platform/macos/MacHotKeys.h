#pragma once

#include "platform/HotKeyService.h"

namespace lumo::macos {

// The event manager's hot keys.
class MacHotKeys final : public HotKeyService {
  public:
    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;
};

} // namespace lumo::macos
