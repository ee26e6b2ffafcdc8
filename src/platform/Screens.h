#pragma once

#include "support/Geometry.h"
#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lumo {

struct Screen {
    // The stable identifier of the display; absent when the display has none.
    std::optional<std::uint32_t> number;

    // In points, in one space for all screens: y pointing up from the bottom edge of the main
    // screen, x the same as that of window bounds.
    Rect frame;

    // Pixels per point.
    double backingScaleFactor = 1;

    bool operator==(const Screen &) const = default;
};

class Screens {
  public:
    virtual ~Screens() = default;

    // The connected screens, the main one first. Empty while none is connected. Valid until control
    // returns to the main loop. Cheap enough for every tick.
    virtual const std::vector<Screen> &screens() const = 0;

    // Calls the observer on the main thread after screens came, went, moved or changed size or
    // scale.
    virtual Handle onScreenParametersDidChange(std::function<void()> observer) = 0;
};

} // namespace lumo
