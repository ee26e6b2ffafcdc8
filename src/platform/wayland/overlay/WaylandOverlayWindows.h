#pragma once

#include "platform/OverlayWindows.h"
#include "platform/wayland/overlay/WaylandPlatformWindow.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace lumo::wayland {

class Connection;

// Makes overlays on a compositor and keeps what they share. Outlives its overlays.
class WaylandOverlayWindows final : public OverlayWindows {
  public:
    // The connection has no missingRequirement(). All arguments outlive the object.
    WaylandOverlayWindows(Connection &connection, WaylandScreens &screens, WindowSource &source,
                          MainLoop &mainLoop);

    // Whether the compositor blurs what lies behind overlays, at the moment.
    bool canBlur() const { return factories_.blur->isAvailable(); }

    // From now on this program's windows of that title have round corners, with that radius in
    // points: what lies behind those is covered.
    void setRounded(const std::string &title, double cornerRadius);

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

  private:
    SurfaceFactories factories_;
    OverlaySurroundings surroundings_;

    // Overlays are in no list of windows; sources count theirs from the other end.
    std::uint32_t nextNumber_ = std::numeric_limits<std::uint32_t>::max();
};

} // namespace lumo::wayland
