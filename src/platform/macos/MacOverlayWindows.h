#pragma once

#include "platform/OverlayWindows.h"
#include "platform/macos/MacWindowServer.h"

#include <cstdint>
#include <set>

namespace lumo::macos {

// The overlay windows of this program.
class MacOverlayWindows final : public OverlayWindows {
  public:
    // The window server outlives the object and the windows.
    explicit MacOverlayWindows(const MacWindowServer &windowServer);

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

  private:
    friend class MacOverlayWindow;

    const MacWindowServer &windowServer_;
    std::set<std::uint32_t> numbers_; // of all overlays that exist
};

} // namespace lumo::macos
