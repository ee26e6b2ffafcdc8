#pragma once

#include "platform/Appearance.h"
#include "support/Signal.h"

@class LumoAppearanceObserver;

namespace lumo::macos {

// The appearance in which the application object shows the program's windows.
class MacAppearance final : public Appearance {
  public:
    // The application object exists by then.
    MacAppearance();
    ~MacAppearance() override;
    MacAppearance(const MacAppearance &) = delete;
    MacAppearance &operator=(const MacAppearance &) = delete;

    std::optional<bool> prefersDark() const override;
    Handle onChange(std::function<void()> observer) override;

  private:
    LumoAppearanceObserver *observer_;
    Signal<> changed_;
};

} // namespace lumo::macos
