#pragma once

#include "platform/Accessibility.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <optional>

namespace lumo::wayland {

class WindowSource;

// Other applications' windows by way of the compositor, which the source speaks for: without one
// that answers, the program has not started.
class WaylandAccessibility final : public Accessibility {
  public:
    // The source outlives the object.
    explicit WaylandAccessibility(WindowSource &source);

    bool isProcessTrusted() const override { return true; }
    Handle onProcessTrustDidChange(std::function<void()> /*observer*/) override { return {}; }
    Handle onFocusedWindowDidChange(std::function<void()> observer) override;

    // Front to back.
    std::vector<std::unique_ptr<AccessibilityWindow>>
    windows(std::int32_t processIdentifier) override;

  private:
    class Window;

    WindowSource &source_;
    std::optional<std::uint32_t> announcedFocus_;
    Signal<> focusedWindowChanged_;
    Handle changes_;
};

} // namespace lumo::wayland
