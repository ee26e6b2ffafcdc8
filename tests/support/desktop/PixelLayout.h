#pragma once

#include "desktop/Picture.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>

namespace lumo::desktop {

// How colours lie in the pixels of a screen's images, on a server of this machine's byte order.
struct PixelLayout {
    std::uint32_t red = 0xff0000; // the bits of the channel
    std::uint32_t green = 0xff00;
    std::uint32_t blue = 0xff;
    std::size_t bytesPerPixel = 4;

    // The ordinary one for a screen without true colours.
    static PixelLayout of(xcb_connection_t *connection, const xcb_screen_t &screen);

    Colour colourOf(std::uint32_t pixel) const;
    std::uint32_t pixelOf(Colour colour) const;

    // A row of an image in bytes, with its padding.
    std::size_t rowBytes(int width) const {
        return (static_cast<std::size_t>(width) * bytesPerPixel + 3) / 4 * 4;
    }
    Colour read(const std::uint8_t *row, int x) const;
    void write(std::uint8_t *row, int x, Colour colour) const;

    bool operator==(const PixelLayout &) const = default;
};

} // namespace lumo::desktop
