#pragma once

#include "drawing/PixelRect.h"
#include "drawing/Region.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace lumo::x11 {

// The rectangle as requests carry it. What the protocol can't say is cut off.
inline xcb_rectangle_t toProtocol(const drawing::PixelRect &rectangle) {
    return {static_cast<std::int16_t>(rectangle.x), static_cast<std::int16_t>(rectangle.y),
            static_cast<std::uint16_t>(rectangle.width),
            static_cast<std::uint16_t>(rectangle.height)};
}

inline std::vector<xcb_rectangle_t> toProtocol(const drawing::Region &region) {
    std::vector<xcb_rectangle_t> result;
    for (const auto &rectangle : region.rectangles()) {
        result.push_back(toProtocol(rectangle));
    }
    return result;
}

} // namespace lumo::x11
