#pragma once

#include "drawing/PlacedLayers.h"

#include <functional>

namespace lumo::x11 {

// Turns layers into the pixels of one X window, in two steps so that a change of the window's place
// can go between them: paint() works out of sight and makes the result the background of what the
// window uncovers from then on; present() brings it to where the window shows already. Made for a
// window that outlives it. Main thread only; waits for nothing.
class Painter {
  public:
    virtual ~Painter() = default;

    // Draws what has changed since the last call: in the appearance, or beneath the window. Calls
    // the function once, perhaps before returning, when that is the window's background; not if
    // suspend(), another paint() or the painter's end comes first. From then on what changes
    // beneath is followed by itself. The alpha is above 0.
    virtual void paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) = 0;

    // Brings what paint() has told to be painted to the window.
    virtual void present() = 0;

    // The window is not to be seen until the next paint(): what changes beneath may wait.
    virtual void suspend() = 0;
};

} // namespace lumo::x11
