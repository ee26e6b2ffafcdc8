#pragma once

#include "platform/Accessibility.h"
#include "platform/Workspace.h"

namespace lumo::macos {

// Other applications' windows through the accessibility interface, as far as the user trusts this
// program with it.
class MacAccessibility final : public Accessibility {
  public:
    // The workspace outlives the object and what it hands out.
    explicit MacAccessibility(Workspace &workspace);

    bool isProcessTrusted() const override;

    // The system announces nothing about it that programs may rely on.
    Handle onProcessTrustDidChange(std::function<void()>) override { return {}; }

    // Follows the frontmost application.
    Handle onFocusedWindowDidChange(std::function<void()> observer) override;

    std::vector<std::unique_ptr<AccessibilityWindow>>
    windows(std::int32_t processIdentifier) override;

  private:
    Workspace &workspace_;
};

} // namespace lumo::macos
