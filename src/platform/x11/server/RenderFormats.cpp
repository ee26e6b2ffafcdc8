#include "platform/x11/server/RenderFormats.h"

#include "platform/x11/server/Connection.h"

#include <algorithm>

namespace lumo::x11 {

namespace {

bool isArgb(const xcb_render_pictforminfo_t &format) {
    const auto &direct = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && format.depth == 32 &&
           direct.red_mask == 0xff && direct.green_mask == 0xff && direct.blue_mask == 0xff &&
           direct.red_shift == 16 && direct.green_shift == 8 && direct.blue_shift == 0;
}

} // namespace

RenderFormats::RenderFormats(const Connection &connection)
    : rootVisual_(connection.screen().root_visual)
    , rootDepth_(connection.screen().root_depth) {
    if (!connection.extensions().render) {
        return;
    }
    const auto reply = connection.wait(xcb_render_query_pict_formats(connection),
                                       xcb_render_query_pict_formats_reply);
    if (!reply) {
        return;
    }
    for (auto formats = xcb_render_query_pict_formats_formats_iterator(reply.get());
         formats.rem > 0; xcb_render_pictforminfo_next(&formats)) {
        const auto &format = *formats.data;
        if (isArgb(format) && format.direct.alpha_mask == 0xff && format.direct.alpha_shift == 24) {
            translucent_ = format.id;
        } else if (isArgb(format) && format.direct.alpha_mask == 0) {
            withoutAlpha_ = format.id;
        }
    }
    auto screens = xcb_render_query_pict_formats_screens_iterator(reply.get());
    for (int i = 0; i < connection.screenNumber() && screens.rem > 1; ++i) {
        xcb_render_pictscreen_next(&screens);
    }
    for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0;
         xcb_render_pictdepth_next(&depths)) {
        for (auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_render_pictvisual_next(&visuals)) {
            visuals_.push_back({visuals.data->visual, depths.data->depth, visuals.data->format});
            if (visuals.data->format == translucent_ && translucentVisual_ == XCB_NONE) {
                translucentVisual_ = visuals.data->visual;
            }
        }
    }
}

xcb_render_pictformat_t RenderFormats::opaque(xcb_visualid_t visual) const {
    const auto found = std::ranges::find(visuals_, visual, &VisualFormat::visual);
    if (found == visuals_.end()) {
        return XCB_NONE;
    }
    return found->format == translucent_ && withoutAlpha_ != XCB_NONE ? withoutAlpha_
                                                                      : found->format;
}

bool RenderFormats::hasAlpha(xcb_visualid_t visual) const {
    const auto found = std::ranges::find(visuals_, visual, &VisualFormat::visual);
    return found != visuals_.end() && found->format == translucent_ && translucent_ != XCB_NONE;
}

xcb_render_pictformat_t RenderFormats::opaqueOfDepth(std::uint8_t depth) const {
    if (depth == rootDepth_) {
        return opaque(rootVisual_);
    }
    const auto found = std::ranges::find(visuals_, depth, &VisualFormat::depth);
    return found == visuals_.end() ? XCB_NONE : opaque(found->visual);
}

} // namespace lumo::x11
