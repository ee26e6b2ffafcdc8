#pragma once

#include "drawing/PixelRect.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace lumo::x11 {

// A window as it takes part in a scene. Geometries are on the root window.
struct SceneEntry {
    xcb_window_t window = XCB_NONE;
    drawing::PixelRect geometry;
    drawing::PixelRect visible;
    double opacity = 1;
    std::uint64_t version = 0; // of its surface

    bool operator==(const SceneEntry &) const = default;
};

// The geometries, old and new, of windows that have come, gone or changed, or must have been
// restacked: all others kept their order among each other, so that elsewhere the scene is the same.
// Both from the bottom to the top.
std::vector<drawing::PixelRect> changedAreas(const std::vector<SceneEntry> &before,
                                             const std::vector<SceneEntry> &after);

} // namespace lumo::x11
