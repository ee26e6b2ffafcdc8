#include "platform/x11/painting/Wallpaper.h"

#include "platform/freedesktop/DesktopSettings.h"
#include "platform/x11/painting/CompositorWatch.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/windows/WindowMirror.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace lumo::x11 {

namespace {

// The first is what nearly all programs set; some set the second alone.
constexpr std::array<std::string_view, 2> properties = {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"};

constexpr double longestWait = 1; // seconds, while starting

xcb_render_color_t opaque(const Color &color) {
    const auto channel = [](double value) {
        return static_cast<std::uint16_t>(std::lround(value * 65535));
    };
    return {channel(color.red), channel(color.green), channel(color.blue), 0xffff};
}

OwnedPicture repeatingPicture(Connection &connection, xcb_pixmap_t pixmap,
                              xcb_render_pictformat_t format) {
    OwnedPicture picture(connection);
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    xcb_render_create_picture(connection, picture.id(), pixmap, format, XCB_RENDER_CP_REPEAT,
                              &repeat);
    return picture;
}

} // namespace

Wallpaper::Wallpaper(Connection &connection, WindowMirror &mirror, const RenderFormats &formats,
                     CompositorWatch &compositor)
    : connection_(connection)
    , mirror_(mirror)
    , formats_(formats)
    , compositor_(compositor)
    , rootWidth_(connection.screen().width_in_pixels)
    , rootHeight_(connection.screen().height_in_pixels)
    , events_(connection.events().on(
          event::configureNotify, connection.root(),
          [this](const auto &configure) { rootIs(configure.width, configure.height); }))
    , compositorChanges_(compositor.onChange([this] { recapture(); }))
    , mirrorChanges_(mirror.onChange([this](const MirrorChange &change) {
        if (change.wallpaper) {
            ++reading_;
            readProperty(0);
        }
    })) {
    readProperty(0);
    connection_.dispatchUntil([this] { return source_ != Source::unread; }, longestWait);
}

void Wallpaper::readProperty(std::size_t index) {
    if (index == properties.size()) {
        settle({});
        return;
    }
    const auto cookie =
        xcb_get_property(connection_, 0, connection_.root(), connection_.atom(properties[index]),
                         XCB_ATOM_PIXMAP, 0, 1);
    connection_.whenReplied<xcb_get_property_reply_t>(
        cookie, lifetime_.guard([this, index, reading = reading_](const auto *reply) {
            if (reading != reading_) {
                return;
            }
            if (reply == nullptr || reply->format != 32 || reply->value_len != 1) {
                readProperty(index + 1);
                return;
            }
            readPixmap(index, *static_cast<const xcb_pixmap_t *>(xcb_get_property_value(reply)));
        }));
}

void Wallpaper::readPixmap(std::size_t index, xcb_pixmap_t pixmap) {
    // A program that set the property may have gone, and its pixmap with it.
    connection_.whenReplied<xcb_get_geometry_reply_t>(
        xcb_get_geometry(connection_, pixmap),
        lifetime_.guard([this, index, pixmap, reading = reading_](const auto *reply) {
            if (reading != reading_) {
                return;
            }
            const auto format = reply == nullptr ? xcb_render_pictformat_t{XCB_NONE}
                                                 : formats_.opaqueOfDepth(reply->depth);
            if (format == XCB_NONE) {
                readProperty(index + 1);
                return;
            }
            settle(repeatingPicture(connection_, pixmap, format));
        }));
}

void Wallpaper::settle(OwnedPicture picture) {
    source_ = picture ? Source::property : Source::rootBackground;
    picture_ = std::move(picture);
    changed_.emit();
}

void Wallpaper::rootIs(std::uint16_t width, std::uint16_t height) {
    if (width != rootWidth_ || height != rootHeight_) {
        rootWidth_ = width;
        rootHeight_ = height;
        recapture();
    }
}

void Wallpaper::recapture() {
    if (source_ != Source::property) {
        picture_.reset();
    }
    changed_.emit();
}

void Wallpaper::drawOnto(xcb_render_picture_t picture, const drawing::PixelRect &area) {
    if (!picture_) {
        capture();
    }
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, picture_.id(), XCB_NONE, picture,
                         static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y), 0, 0,
                         0, 0, static_cast<std::uint16_t>(area.width),
                         static_cast<std::uint16_t>(area.height));
}

void Wallpaper::capture() {
    if (!compositor_.isCompositing()) {
        captureRootBackground();
    } else if (const auto color = freedesktop::desktopBackgroundColor()) {
        captureSettingsColor(*color);
    } else if (const auto place = uncoveredPlace()) {
        captureSeen(place->first, place->second);
    } else {
        captureRootBackground();
    }
}

void Wallpaper::captureSettingsColor(const Color &color) {
    picture_ = OwnedPicture(connection_);
    xcb_render_create_solid_fill(connection_, picture_.id(), opaque(color));
}

// Some compositing managers show the root window's background there, others a colour of their own.
void Wallpaper::captureSeen(std::int16_t x, std::int16_t y) {
    const OwnedPixmap pixmap(connection_);
    xcb_create_pixmap(connection_, connection_.screen().root_depth, pixmap.id(), connection_.root(),
                      1, 1);
    const OwnedPicture root(connection_);
    const auto format = formats_.opaque(connection_.screen().root_visual);
    const std::uint32_t withWindows = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_render_create_picture(connection_, root.id(), connection_.root(), format,
                              XCB_RENDER_CP_SUBWINDOW_MODE, &withWindows);
    picture_ = repeatingPicture(connection_, pixmap.id(), format);
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, root.id(), XCB_NONE, picture_.id(), x,
                         y, 0, 0, 0, 0, 1, 1);
}

// Absent when windows, overlays among them, and the shadows around them leave none.
std::optional<std::pair<std::int16_t, std::int16_t>> Wallpaper::uncoveredPlace() const {
    constexpr int steps = 24;
    constexpr int shadow = 40; // pixels
    for (int place = 0; place < steps * steps; ++place) {
        const int x = (2 * (place % steps) + 1) * rootWidth_ / (2 * steps);
        const int y = (2 * (place / steps) + 1) * rootHeight_ / (2 * steps);
        const auto &stacking = mirror_.stacking();
        const bool isCovered = std::ranges::any_of(stacking, [&](xcb_window_t frame) {
            const auto &window = *mirror_.find(frame);
            const auto &area = window.geometry;
            return window.isMapped && !window.isInputOnly && x >= area.x - shadow &&
                   x < area.maxX() + shadow && y >= area.y - shadow && y < area.maxY() + shadow;
        });
        if (!isCovered) {
            return std::pair(static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
        }
    }
    return std::nullopt;
}

// The server tells no client the root window's background, but draws it into a window whose own
// background is "that of the parent". Such a window, redirected so that it is never seen and gone
// again at once, leaves its pixels behind.
void Wallpaper::captureRootBackground() {
    const OwnedWindow window(connection_);
    const std::array<std::uint32_t, 3> attributes = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 0, 1};
    xcb_create_window(
        connection_, XCB_COPY_FROM_PARENT, window.id(), connection_.root(), 0, 0, rootWidth_,
        rootHeight_, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT, attributes.data());
    const auto nowhere = makeEmptyRegion(connection_);
    xcb_xfixes_set_window_shape_region(connection_, window.id(), XCB_SHAPE_SK_INPUT, 0, 0,
                                       nowhere.id());
    xcb_composite_redirect_window(connection_, window.id(), XCB_COMPOSITE_REDIRECT_MANUAL);
    const std::uint32_t below = XCB_STACK_MODE_BELOW;
    xcb_configure_window(connection_, window.id(), XCB_CONFIG_WINDOW_STACK_MODE, &below);
    xcb_map_window(connection_, window.id());
    const OwnedPixmap pixmap(connection_);
    xcb_composite_name_window_pixmap(connection_, window.id(), pixmap.id());
    picture_ = repeatingPicture(connection_, pixmap.id(),
                                formats_.opaque(connection_.screen().root_visual));
}

} // namespace lumo::x11
