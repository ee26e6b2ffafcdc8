#pragma once

#include "platform/LayerTree.h"
#include "platform/x11/PixelRect.h"
#include "platform/x11/PointSpace.h"

#include <functional>

namespace lumo::x11 {

// All that decides what one overlay's pixels are, apart from what lies beneath it.
struct Appearance {
    PixelRect area;   // the window's pixels on the root window
    Rect frame;       // the same in points, in the space of screen frames
    PointSpace space; // by which one became the other
    LayerTree tree;
    double alpha = 1; // the view's alpha times the window's

    // A rectangle in the view's coordinates as pixels of the window, origin at its top left, y
    // down. Edges that lie on the window's edges do so in pixels as well.
    PixelRect toWindow(const Rect &inView) const {
        const auto onRoot = space.pixelsOfFrame(
            inView.translated(frame.x - tree.bounds.x, frame.y - tree.bounds.y));
        return {onRoot.x - area.x, onRoot.y - area.y, onRoot.width, onRoot.height};
    }

    bool operator==(const Appearance &) const = default;
};

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
    virtual void paint(const Appearance &appearance, std::function<void()> painted) = 0;

    // Brings what paint() has told to be painted to the window.
    virtual void present() = 0;

    // The window is not to be seen until the next paint(): what changes beneath may wait.
    virtual void suspend() = 0;
};

} // namespace lumo::x11
