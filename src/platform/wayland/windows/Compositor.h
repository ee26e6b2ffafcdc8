#pragma once

#include "drawing/PixelRect.h"
#include "support/Handle.h"

#include <functional>
#include <string>

namespace lumo {
class HotKeyService;
}

namespace lumo::wayland {

class WindowSource;

// What compositors of one kind have in common beyond the protocols that all of them know: who tells
// about their windows, and how a program gets what belongs to the user's session there. Main thread
// only.
class Compositor {
  public:
    virtual ~Compositor() = default;

    virtual WindowSource &windows() = 0;
    virtual HotKeyService &hotKeys() = 0;

    // Whether it tells of the pointer at all. Calls the observer whenever the pointer has gone to
    // the right, or by a negative number to the left, by so many points; what is less than a stroke
    // of a shake may be left out. Nothing where the compositor does not tell.
    virtual bool tellsOfPointer() const { return false; }
    // NOLINTNEXTLINE(performance-unnecessary-value-param): those that tell keep it
    virtual Handle onPointerStroke(std::function<void(double deltaX)> /*observer*/) { return {}; }

    // Whether the compositor may come to blur what lies behind surfaces while this program runs.
    virtual bool mayBlur() const { return false; }

    // Has windows of this program that open with that title come up there from now on, in points of
    // the compositor's space, above others and without a frame; where the compositor knows more
    // about panels, instead at the one that has that point.
    virtual void placeWindows(const std::string & /*title*/, const drawing::PixelRect & /*area*/,
                              const drawing::PixelRect & /*point*/) {}

    // Calls the function once when what is used beside the Wayland connection is lost.
    virtual Handle onLost(std::function<void()> function) = 0;
};

} // namespace lumo::wayland
