#pragma once

#include "platform/LoginItem.h"

namespace lumo::macos {

// The application itself as a login item.
class MacLoginItem final : public LoginItem {
  public:
    std::optional<std::string> registerMainApplication() override;
    std::optional<std::string> unregisterMainApplication() override;
};

} // namespace lumo::macos
