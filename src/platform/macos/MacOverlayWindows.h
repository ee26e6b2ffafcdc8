#pragma once

#include "platform/OverlayWindows.h"
#include "platform/macos/MacWindowServer.h"
#include "support/Log.h"

#include <cstdint>
#include <set>

namespace lumo::macos {

// The overlay windows of this program.
class MacOverlayWindows final : public OverlayWindows {
  public:
    // The window server and the log outlive the object and the windows.
    MacOverlayWindows(const MacWindowServer &windowServer, const Log &log);

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

  private:
    friend class MacOverlayWindow;

    const MacWindowServer &windowServer_;
    const Log &log_;
    std::set<std::uint32_t> numbers_; // of all overlays that exist
};

} // namespace lumo::macos
