#pragma once

#include "platform/wayland/windows/DesktopState.h"
#include "support/Handle.h"

#include <cstdint>
#include <functional>

namespace lumo::wayland {

// Who tells about the windows of a compositor, and acts on them in the user's name. No protocol
// that all compositors have does, so there is one for each kind of them. Main thread only; never
// waits once it is made.
class WindowSource {
  public:
    virtual ~WindowSource() = default;

    // Valid until control returns to the main loop. Cheap enough for every tick.
    virtual const DesktopState &state() const = 0;

    // Calls the observer after state() has become different. A source whose compositor does not
    // announce everything asks by itself, as often as AskingPace says.
    virtual Handle onChange(std::function<void()> observer) = 0;

    // Whether a window that gets the focus comes above all others that it overlaps.
    virtual bool focusRaises() const = 0;

    // Shows the window, raises it and gives it the focus.
    virtual void activate(std::uint32_t window) = 0;

    // Raises the window above the others of its layer; a compositor that knows no such thing by
    // itself gives it the focus as well.
    virtual void raise(std::uint32_t window) = 0;
};

} // namespace lumo::wayland
