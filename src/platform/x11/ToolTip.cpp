#include "platform/x11/ToolTip.h"

#include "platform/MainLoop.h"
#include "platform/x11/TextPicture.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/PropertyWriter.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/ServerImages.h"
#include "platform/x11/server/X11Screens.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace lumo::x11 {

namespace {

constexpr double restingTime = 0.5; // seconds
constexpr double distance = 4;      // points from the icon

constexpr TextColors colors{.text = {0.96, 0.96, 0.97, 1},
                            .background = {0.17, 0.18, 0.2, 1},
                            .border = {0.42, 0.43, 0.47, 1}};

} // namespace

ToolTip::ToolTip(Connection &connection, const RenderFormats &formats, ServerImages &images,
                 const X11Screens &screens, MainLoop &mainLoop)
    : connection_(connection)
    , formats_(formats)
    , images_(images)
    , screens_(screens)
    , mainLoop_(mainLoop) {
    connection_.internAtoms({"_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_TOOLTIP"});
}

ToolTip::~ToolTip() = default;

void ToolTip::pointerMoved(const drawing::PixelRect &icon) {
    if (state_ == State::away || state_ == State::resting) {
        state_ = State::resting;
        delay_ = mainLoop_.after(restingTime, [this, icon] { show(icon); });
    }
}

void ToolTip::pointerLeft() {
    state_ = State::away;
    delay_.reset();
    window_.reset();
}

void ToolTip::dismiss() {
    pointerLeft();
    state_ = State::dismissed;
}

void ToolTip::show(const drawing::PixelRect &icon) {
    delay_.reset();
    state_ = State::shown;
    const auto visual = connection_.screen().root_visual;
    const auto image = images_.find(
        std::make_shared<const Image>(textPicture(text_, colors, screens_.pointSpace().scale())));
    if (text_.empty() || !image || formats_.opaque(visual) == XCB_NONE) {
        return;
    }
    makeWindow(place(icon, image->width, image->height));
    const auto width = static_cast<std::uint16_t>(image->width);
    const auto height = static_cast<std::uint16_t>(image->height);
    const OwnedPixmap contents(connection_);
    xcb_create_pixmap(connection_, connection_.screen().root_depth, contents.id(), window_.id(),
                      width, height);
    const OwnedPicture from(connection_);
    xcb_render_create_picture(connection_, from.id(), image->pixmap.id(), formats_.translucent(), 0,
                              nullptr);
    const OwnedPicture to(connection_);
    xcb_render_create_picture(connection_, to.id(), contents.id(), formats_.opaque(visual), 0,
                              nullptr);
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, from.id(), XCB_NONE, to.id(), 0, 0, 0,
                         0, 0, 0, width, height);
    // The server draws a background by itself, whenever it is needed.
    const std::uint32_t background = contents.id();
    xcb_change_window_attributes(connection_, window_.id(), XCB_CW_BACK_PIXMAP, &background);
    xcb_map_window(connection_, window_.id());
    connection_.flush();
}

// Below the icon's middle, or above it, wholly on the icon's screen.
drawing::PixelRect ToolTip::place(const drawing::PixelRect &icon, int width, int height) const {
    const auto &areas = screens_.pixelRects();
    const auto found = std::ranges::find_if(
        areas, [&](const drawing::PixelRect &area) { return area.overlaps(icon); });
    const auto screen = found != areas.end()
                            ? *found
                            : drawing::PixelRect{0, 0, connection_.screen().width_in_pixels,
                                                 connection_.screen().height_in_pixels};
    const int gap = static_cast<int>(std::lround(distance * screens_.pointSpace().scale()));
    const int below = icon.maxY() + gap;
    const int middle = icon.x + (icon.width - width) / 2;
    return {std::clamp(middle, screen.x, std::max(screen.x, screen.maxX() - width)),
            below + height <= screen.maxY() ? below : icon.y - gap - height, width, height};
}

void ToolTip::makeWindow(const drawing::PixelRect &area) {
    window_ = OwnedWindow(connection_);
    const std::uint32_t overrideRedirect = 1;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_.id(), connection_.root(),
                      static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
                      static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    setIdentity(connection_, window_.id(), "Lumo Tool Tip");
    setValues(connection_, window_.id(), "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
              {connection_.atom("_NET_WM_WINDOW_TYPE_TOOLTIP")});
    if (connection_.extensions().xfixes && connection_.extensions().shape) {
        const auto nothing = makeEmptyRegion(connection_);
        xcb_xfixes_set_window_shape_region(connection_, window_.id(), XCB_SHAPE_SK_INPUT, 0, 0,
                                           nothing.id());
    }
}

} // namespace lumo::x11
