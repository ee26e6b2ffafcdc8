#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace lumo {

// One window of another application, as the accessibility interface sees it.
class AccessibilityWindow {
  public:
    virtual ~AccessibilityWindow() = default;

    // Brings the window in front of its application's other windows. False when that was refused.
    virtual bool raise() = 0;
};

class Accessibility {
  public:
    virtual ~Accessibility() = default;

    // Whether this process may read and raise other applications' windows. Never prompts.
    virtual bool isProcessTrusted() const = 0;

    // Calls the observer on the main thread after that may have become different, where the system
    // tells; never elsewhere.
    virtual Handle onProcessTrustDidChange(std::function<void()> observer) = 0;

    // Calls the observer on the main thread after another window got the focus, be it of the same
    // application or not.
    virtual Handle onFocusedWindowDidChange(std::function<void()> observer) = 0;

    // The windows of a process in the order in which it lists them; empty when they can't be read.
    virtual std::vector<std::unique_ptr<AccessibilityWindow>>
    windows(std::int32_t processIdentifier) = 0;
};

} // namespace lumo
