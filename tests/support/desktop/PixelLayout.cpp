#include "desktop/PixelLayout.h"

#include <bit>
#include <cstring>

namespace lumo::desktop {

namespace {

std::uint8_t channelOf(std::uint32_t pixel, std::uint32_t mask) {
    const std::uint64_t largest = mask >> std::countr_zero(mask);
    const std::uint64_t value = (pixel & mask) >> std::countr_zero(mask);
    return static_cast<std::uint8_t>((value * 255 + largest / 2) / largest);
}

std::uint32_t bitsOf(std::uint8_t channel, std::uint32_t mask) {
    const std::uint64_t largest = mask >> std::countr_zero(mask);
    return static_cast<std::uint32_t>((channel * largest + 127) / 255) << std::countr_zero(mask);
}

} // namespace

PixelLayout PixelLayout::of(xcb_connection_t *connection, const xcb_screen_t &screen) {
    PixelLayout layout;
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            const auto &visual = *visuals.data;
            if (visual.visual_id == screen.root_visual &&
                visual._class == XCB_VISUAL_CLASS_TRUE_COLOR) {
                layout = {visual.red_mask, visual.green_mask, visual.blue_mask};
            }
        }
    }
    for (auto formats = xcb_setup_pixmap_formats_iterator(xcb_get_setup(connection));
         formats.rem > 0; xcb_format_next(&formats)) {
        if (formats.data->depth == screen.root_depth) {
            layout.bytesPerPixel = formats.data->bits_per_pixel / 8U;
        }
    }
    return layout;
}

Colour PixelLayout::colourOf(std::uint32_t pixel) const {
    return {channelOf(pixel, red), channelOf(pixel, green), channelOf(pixel, blue)};
}

std::uint32_t PixelLayout::pixelOf(Colour colour) const {
    return bitsOf(colour.red, red) | bitsOf(colour.green, green) | bitsOf(colour.blue, blue);
}

Colour PixelLayout::read(const std::uint8_t *row, int x) const {
    if (*this == PixelLayout{}) { // by far the most, and whole pictures of it
        const std::uint8_t *pixel = row + static_cast<std::size_t>(x) * 4;
        return {pixel[2], pixel[1], pixel[0]};
    }
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + static_cast<std::size_t>(x) * bytesPerPixel, bytesPerPixel);
    return colourOf(pixel);
}

void PixelLayout::write(std::uint8_t *row, int x, Colour colour) const {
    const std::uint32_t pixel = pixelOf(colour);
    std::memcpy(row + static_cast<std::size_t>(x) * bytesPerPixel, &pixel, bytesPerPixel);
}

} // namespace lumo::desktop
