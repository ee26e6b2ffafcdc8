#pragma once

#include "drawing/PixelRect.h"
#include "drawing/PointSpace.h"
#include "platform/Screens.h"
#include "platform/wayland/client/ProtocolPointers.h"
#include "support/Geometry.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo::wayland {

class Connection;

// One display as the compositor describes it. Points of the compositor's own space have their
// origin where the compositor wants it, and y pointing down.
struct Output {
    std::uint32_t global = 0; // its number among the globals
    wl_output *object = nullptr;
    std::string name;        // as "DP-1"
    drawing::PixelRect area; // in points of the compositor's space
    double scale = 1;        // pixels per point
};

// Pixels per point of a display with a mode of that size, from what the compositor makes of it: a
// whole number of 120ths, as in the protocol for fractional scales. The mode's sides are swapped
// where the display is turned by a quarter.
double scaleOf(const drawing::PixelRect &area, int modeWidth, int modeHeight, bool isTurned);

// The compositor's displays. What arrives about them in one batch of events is one change. The main
// one is the one nearest to the origin. Main thread only.
class WaylandScreens final : public Screens {
  public:
    // Waits for the compositor. The connection outlives the object.
    explicit WaylandScreens(Connection &connection);
    ~WaylandScreens() override;

    const std::vector<Screen> &screens() const override { return screens_; }
    Handle onScreenParametersDidChange(std::function<void()> observer) override;

    // Those of screens(), in the same order.
    const std::vector<Output> &outputs() const { return outputs_; }

    // The one with that frame, which is one of Screen::frame; null when there is none any more.
    const Output *outputOfFrame(const Rect &frame) const;

    // From the compositor's space, counted as pixels, to the port's two and back.
    const drawing::PointSpace &pointSpace() const { return pointSpace_; }

  private:
    struct Display;

    void update();

    Connection &connection_;
    ProtocolPointer<zxdg_output_manager_v1> manager_;
    std::vector<std::unique_ptr<Display>> displays_;
    bool isStale_ = true;
    std::vector<Output> outputs_;
    std::vector<Screen> screens_;
    drawing::PointSpace pointSpace_;
    Signal<> changed_;
    std::array<Handle, 3> events_;
};

} // namespace lumo::wayland
