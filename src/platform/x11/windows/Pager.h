#pragma once

#include <xcb/xcb.h>

namespace lumo::x11 {

class Connection;
class WindowMirror;
struct MirrorWindow;

// Sends the window manager requests in the user's name, as pagers and task bars do. Nothing waits
// for what comes of it.
class Pager {
  public:
    Pager(Connection &connection, const WindowMirror &mirror);

    // True when a window manager runs that activates windows on request.
    bool isAvailable() const;

    // Shows the managed window, raises it and gives it the focus.
    void activate(const MirrorWindow &window);

    // Raises the managed window above the others of its stacking layer.
    void raise(const MirrorWindow &window);

  private:
    Connection &connection_;
    const WindowMirror &mirror_;
    xcb_atom_t activeWindow_;
    xcb_atom_t restackWindow_;
};

} // namespace lumo::x11
