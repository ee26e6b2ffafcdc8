#pragma once

#include "drawing/PixelRect.h"

#include <xcb/xcb.h>

#include <cstdint>

namespace lumo::x11 {

// The rectangle as requests carry it. What the protocol can't say is cut off.
inline xcb_rectangle_t toProtocol(const drawing::PixelRect &rectangle) {
    return {static_cast<std::int16_t>(rectangle.x), static_cast<std::int16_t>(rectangle.y),
            static_cast<std::uint16_t>(rectangle.width),
            static_cast<std::uint16_t>(rectangle.height)};
}

} // namespace lumo::x11
