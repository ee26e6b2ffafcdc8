#pragma once

namespace lumo::x11 {

// What changed since the last announcement. The mirror gathers a batch of events before it
// announces.
struct MirrorChange {
    bool stacking = false;   // order, or the set of windows
    bool appearance = false; // geometry, mapping, shape, opacity: what would be seen differently
    bool properties = false; // titles, owners, stacking layers
    bool activeWindow = false;
    bool currentDesktop = false;
    bool windowManager = false; // came, went, was replaced, understands other hints
    bool wallpaper = false;     // the root window's pixmap property

    bool operator==(const MirrorChange &) const = default;
};

} // namespace lumo::x11
