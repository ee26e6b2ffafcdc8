#pragma once

#include <xcb/render.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

namespace lumo::x11 {

class Connection;

// The pixel formats in which the server can compose pictures. Asked for once, while starting. A
// format that the server lacks is XCB_NONE.
class RenderFormats {
  public:
    explicit RenderFormats(const Connection &connection);

    // 32 bits deep, premultiplied: from the highest byte to the lowest alpha, red, green and blue.
    // Every server that composes at all has it.
    xcb_render_pictformat_t translucent() const { return translucent_; }

    // Of windows of that visual, without their alpha if they have any.
    xcb_render_pictformat_t opaque(xcb_visualid_t visual) const;

    // Whether windows of that visual have alpha: their format is then translucent().
    bool hasAlpha(xcb_visualid_t visual) const;

    // Of pixmaps of that depth, taken as opaque.
    xcb_render_pictformat_t opaqueOfDepth(std::uint8_t depth) const;

    // A visual for windows with alpha; XCB_NONE where there is none.
    xcb_visualid_t translucentVisual() const { return translucentVisual_; }

  private:
    struct VisualFormat {
        xcb_visualid_t visual;
        std::uint8_t depth;
        xcb_render_pictformat_t format;
    };

    std::vector<VisualFormat> visuals_;
    xcb_visualid_t rootVisual_;
    std::uint8_t rootDepth_;
    xcb_render_pictformat_t translucent_ = XCB_NONE;
    xcb_render_pictformat_t withoutAlpha_ = XCB_NONE; // laid out as translucent_, alpha ignored
    xcb_visualid_t translucentVisual_ = XCB_NONE;
};

} // namespace lumo::x11
