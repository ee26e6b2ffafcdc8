#pragma once

#include "drawing/PixelRect.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace lumo::x11 {

inline constexpr std::size_t bytesPerPixel = 4;

// A part of a picture, and what it is drawn from.
struct Tile {
    drawing::PixelRect texels; // of the downsampled source
    drawing::PixelRect pixels;
};

// Where tiles come from and go to. Both pixmaps have four bytes per pixel.
struct TileRoute {
    xcb_pixmap_t source = XCB_NONE;
    xcb_pixmap_t destination = XCB_NONE;
    std::uint8_t depth = 0; // of the destination
    xcb_gcontext_t context = XCB_NONE;
};

// Has tiles of a pixmap in the server drawn by the processor: fetches the texels of each, in rows
// without padding, has a function draw its pixels from them, and puts those. Nothing waits for the
// server. Main thread only.
class TileTransfer {
  public:
    using Draw =
        std::function<void(const Tile &tile, const std::uint8_t *texels, std::uint8_t *pixels)>;
    using Done = std::function<void(bool succeeded)>;

    virtual ~TileTransfer() = default;

    // Ends what is unfinished as cancel() does. Calls done once, perhaps before returning, when
    // requests made after that find all pixels in the destination; with false when this cannot be
    // done in this way, nor will it be later. The transfer may be destroyed by that call.
    virtual void start(const TileRoute &route, std::vector<Tile> tiles, Draw draw, Done done) = 0;

    // Ends an unfinished transfer without a further call of its functions.
    virtual void cancel() = 0;
};

// Bytes of so many pixels.
inline std::size_t bytesOf(const drawing::PixelRect &rectangle) {
    return bytesPerPixel * static_cast<std::size_t>(rectangle.width) *
           static_cast<std::size_t>(rectangle.height);
}

} // namespace lumo::x11
