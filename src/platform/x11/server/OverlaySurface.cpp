#include "platform/x11/server/OverlaySurface.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/PropertyWriter.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"

#include <sys/utsname.h>
#include <xcb/shape.h>

#include <array>
#include <utility>
#include <vector>

namespace lumo::x11 {

OverlaySurface::OverlaySurface(Connection &connection, const RenderFormats &formats,
                               Control control, const drawing::PixelRect &area,
                               std::function<void()> stateKnown)
    : connection_(connection)
    , control_(control)
    , colormap_(connection)
    , window_(connection)
    , context_(connection)
    , area_(area) {
    const auto translucent = formats.translucentVisual();
    depth_ = translucent != XCB_NONE ? 32 : connection_.screen().root_depth;
    visual_ = translucent != XCB_NONE ? translucent : connection_.screen().root_visual;
    create();
    describe();
    if (control_ == Control::managed) {
        describeToManager();
    }
    letClicksThrough(std::move(stateKnown));
}

void OverlaySurface::create() {
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_.id(), connection_.root(),
                        visual_);
    // What a window manager does to it is announced to the window itself.
    const std::uint32_t events =
        control_ == Control::managed
            ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY
            : std::uint32_t{XCB_EVENT_MASK_PROPERTY_CHANGE};
    const std::array<std::uint32_t, 5> attributes = {
        XCB_BACK_PIXMAP_NONE, 0, control_ == Control::overrideRedirect ? 1U : 0U, events,
        colormap_.id()};
    xcb_create_window(
        connection_, depth_, id(), connection_.root(), static_cast<std::int16_t>(area_.x),
        static_cast<std::int16_t>(area_.y), static_cast<std::uint16_t>(area_.width),
        static_cast<std::uint16_t>(area_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_,
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK |
            XCB_CW_COLORMAP,
        attributes.data());
    const std::uint32_t transparent = 0;
    const std::uint32_t graphicsExposures = 0;
    const std::array<std::uint32_t, 2> values = {transparent, graphicsExposures};
    xcb_create_gc(connection_, context_.id(), id(), XCB_GC_FOREGROUND | XCB_GC_GRAPHICS_EXPOSURES,
                  values.data());
}

void OverlaySurface::describe() {
    setIdentity(connection_, id(), "Lumo");
    utsname machine{};
    if (uname(&machine) == 0) {
        setText(connection_, id(), XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, machine.nodename);
    }
    // Compositing managers that make unfocused windows translucent leave alone what is being
    // dragged, and what says how opaque it is. A managed window of such a type would get no place.
    setValues(
        connection_, id(), "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
        {connection_.atom(control_ == Control::overrideRedirect ? "_NET_WM_WINDOW_TYPE_DND"
                                                                : "_NET_WM_WINDOW_TYPE_NORMAL")});
    constexpr std::uint32_t opaque = 0xffffffff;
    setValues(connection_, id(), "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {opaque});
    setValues(connection_, id(), "_NET_WM_STATE", XCB_ATOM_ATOM,
              {connection_.atom("_NET_WM_STATE_SKIP_TASKBAR"),
               connection_.atom("_NET_WM_STATE_SKIP_PAGER"),
               connection_.atom("_KDE_NET_WM_STATE_SKIP_SWITCHER"),
               connection_.atom("_NET_WM_STATE_STICKY")});
    constexpr std::uint32_t allDesktops = 0xffffffff;
    setValues(connection_, id(), "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {allDesktops});
    // A compositing manager must not step aside for it because it covers a whole screen.
    constexpr std::uint32_t neverBypass = 2;
    setValues(connection_, id(), "_NET_WM_BYPASS_COMPOSITOR", XCB_ATOM_CARDINAL, {neverBypass});
    setValues(connection_, id(), "_COMPTON_SHADOW", XCB_ATOM_CARDINAL, {0});
    // WM_HINTS with nothing but "wants no input", from the Inter-Client Communication Conventions.
    setValues(connection_, id(), "WM_HINTS", XCB_ATOM_WM_HINTS, {1, 0, 0, 0, 0, 0, 0, 0, 0});
}

void OverlaySurface::describeToManager() {
    // Flags for functions and decorations, and none of either.
    setValues(connection_, id(), "_MOTIF_WM_HINTS", connection_.atom("_MOTIF_WM_HINTS"),
              {3, 0, 0, 0, 0});
    // Never active, not even when it comes up.
    setValues(connection_, id(), "_NET_WM_USER_TIME", XCB_ATOM_CARDINAL, {0});
    constexpr std::uint32_t userPosition = 1;
    constexpr std::uint32_t userSize = 2;
    constexpr std::uint32_t smallest = 16;
    constexpr std::uint32_t largest = 32;
    constexpr std::uint32_t gravity = 512;
    const auto x = static_cast<std::uint32_t>(area_.x);
    const auto y = static_cast<std::uint32_t>(area_.y);
    const auto width = static_cast<std::uint32_t>(area_.width);
    const auto height = static_cast<std::uint32_t>(area_.height);
    setValues(connection_, id(), "WM_NORMAL_HINTS", XCB_ATOM_WM_SIZE_HINTS,
              {userPosition | userSize | smallest | largest | gravity, x, y, width, height, width,
               height, width, height, 0, 0, 0, 0, 0, 0, 0, 0, XCB_GRAVITY_STATIC});
}

void OverlaySurface::letClicksThrough(std::function<void()> stateKnown) {
    const auto &extensions = connection_.extensions();
    if (!extensions.xfixes || !extensions.shape) {
        state_ = State::unusable;
        return;
    }
    const xcb_rectangle_t outside = {-1, -1, 1, 1};
    outside_ = OwnedRegion(connection_);
    xcb_xfixes_create_region(connection_, outside_.id(), 1, &outside);
    const auto nothing = makeEmptyRegion(connection_);
    xcb_xfixes_set_window_shape_region(connection_, id(), XCB_SHAPE_SK_INPUT, 0, 0, nothing.id());
    connection_.whenReplied<xcb_shape_get_rectangles_reply_t>(
        xcb_shape_get_rectangles(connection_, id(), XCB_SHAPE_SK_INPUT),
        lifetime_.guard([this, stateKnown = std::move(stateKnown)](const auto *reply) {
            state_ =
                reply != nullptr && reply->rectangles_len == 0 ? State::unmapped : State::unusable;
            stateKnown();
        }));
}

void OverlaySurface::move(const drawing::PixelRect &area) {
    if (area == area_) {
        return;
    }
    area_ = area;
    if (control_ == Control::managed) {
        describeToManager(); // the size that it may have
    }
    const std::array<std::uint32_t, 4> values = {
        static_cast<std::uint32_t>(area.x), static_cast<std::uint32_t>(area.y),
        static_cast<std::uint32_t>(area.width), static_cast<std::uint32_t>(area.height)};
    xcb_configure_window(connection_, id(),
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    if (cutting_ == Cutting::pixels) {
        // The server keeps nothing of a window that it resizes.
        pixels_ = makeEmptyRegion(connection_);
        applyPixels();
    }
}

void OverlaySurface::map() {
    if (state_ == State::unmapped) {
        state_ = State::mapped;
        xcb_map_window(connection_, id());
        if (cutting_ == Cutting::pixels) {
            present(); // what is drawn while it is unmapped is lost
        }
    }
}

void OverlaySurface::unmap() {
    if (state_ == State::mapped) {
        state_ = State::unmapped;
        xcb_unmap_window(connection_, id());
    }
}

void OverlaySurface::setCutting(Cutting cutting) {
    if (cutting == cutting_) {
        return;
    }
    cutting_ = cutting;
    if (cutting_ == Cutting::shape) {
        setContents(std::move(contents_));
        applyShape();
        return;
    }
    const std::uint32_t transparent = 0;
    xcb_change_window_attributes(connection_, id(), XCB_CW_BACK_PIXEL, &transparent);
    pixels_ = makeEmptyRegion(connection_);
    xcb_clear_area(connection_, 0, id(), 0, 0, 0, 0);
    applyShape();
    useShape(XCB_NONE);
}

void OverlaySurface::setCutAway(bool isCutAway) {
    if (isCutAway != isCutAway_) {
        isCutAway_ = isCutAway;
        applyShape();
    }
}

void OverlaySurface::setShape(OwnedRegion shape) {
    if (!shape && !shape_) {
        return;
    }
    shape_ = std::move(shape);
    if (!isCutAway_) {
        applyShape();
    }
}

void OverlaySurface::setPattern(OwnedRegion pattern) {
    pattern_ = std::move(pattern);
    if (!isCutAway_) {
        applyShape();
    }
}

void OverlaySurface::applyShape() {
    if (cutting_ == Cutting::pixels) {
        applyPixels();
    } else {
        applyBoundingShape();
    }
}

void OverlaySurface::applyBoundingShape() {
    if (isCutAway_) {
        useShape(outside_.id());
    } else if (!shape_ && !pattern_) {
        useShape(XCB_NONE);
    } else {
        const auto region = makeEmptyRegion(connection_);
        if (shape_ && pattern_) {
            xcb_xfixes_intersect_region(connection_, shape_.id(), pattern_.id(), region.id());
        } else {
            xcb_xfixes_copy_region(connection_, shape_ ? shape_.id() : pattern_.id(), region.id());
        }
        xcb_xfixes_union_region(connection_, region.id(), outside_.id(), region.id());
        useShape(region.id());
    }
}

// Draws where it shows another part than before, and nowhere else: the compositing manager draws
// anew what it was told of.
void OverlaySurface::applyPixels() {
    auto shown = makeEmptyRegion(connection_);
    const auto whole = toProtocol({0, 0, area_.width, area_.height});
    if (!isCutAway_ && shape_) {
        xcb_xfixes_copy_region(connection_, shape_.id(), shown.id());
    } else if (!isCutAway_) {
        xcb_xfixes_set_region(connection_, shown.id(), 1, &whole);
    }
    const auto changed = makeEmptyRegion(connection_);
    xcb_xfixes_subtract_region(connection_, pixels_.id(), shown.id(), changed.id());
    xcb_xfixes_set_gc_clip_region(connection_, context_.id(), changed.id(), 0, 0);
    xcb_poly_fill_rectangle(connection_, id(), context_.id(), 1, &whole);
    xcb_xfixes_subtract_region(connection_, shown.id(), pixels_.id(), changed.id());
    copyContents(changed.id());
    pixels_ = std::move(shown);
}

void OverlaySurface::useShape(xcb_xfixes_region_t shape) {
    xcb_xfixes_set_window_shape_region(connection_, id(), XCB_SHAPE_SK_BOUNDING, 0, 0, shape);
}

void OverlaySurface::setContents(std::shared_ptr<const OwnedPixmap> contents) {
    contents_ = std::move(contents);
    if (contents_ && cutting_ == Cutting::shape) {
        const std::uint32_t background = contents_->id();
        xcb_change_window_attributes(connection_, id(), XCB_CW_BACK_PIXMAP, &background);
    }
}

void OverlaySurface::present(xcb_xfixes_region_t changed) {
    if (cutting_ == Cutting::shape || changed == XCB_NONE) {
        copyContents(cutting_ == Cutting::shape ? changed : pixels_.id());
        return;
    }
    const auto visible = makeEmptyRegion(connection_);
    xcb_xfixes_intersect_region(connection_, changed, pixels_.id(), visible.id());
    copyContents(visible.id());
}

void OverlaySurface::copyContents(xcb_xfixes_region_t within) {
    if (contents_) {
        xcb_xfixes_set_gc_clip_region(connection_, context_.id(), within, 0, 0);
        xcb_copy_area(connection_, contents_->id(), id(), context_.id(), 0, 0, 0, 0,
                      static_cast<std::uint16_t>(area_.width),
                      static_cast<std::uint16_t>(area_.height));
    }
}

} // namespace lumo::x11
