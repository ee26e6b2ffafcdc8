#include "platform/x11/painting/WindowSurfaces.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/windows/WindowMirror.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <utility>

namespace lumo::x11 {

namespace {

// Damage and shapes count from inside the border.
void moveToRoot(xcb_connection_t *connection, xcb_xfixes_region_t region,
                const drawing::PixelRect &geometry, int borderWidth) {
    xcb_xfixes_translate_region(connection, region,
                                static_cast<std::int16_t>(geometry.x + borderWidth),
                                static_cast<std::int16_t>(geometry.y + borderWidth));
}

// With sequence numbers that wrap around.
bool isAfter(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::int32_t>(a - b) > 0;
}

} // namespace

WindowSurfaces::WindowSurfaces(Connection &connection, WindowMirror &mirror,
                               const RenderFormats &formats)
    : connection_(connection)
    , mirror_(mirror)
    , formats_(formats)
    , mirrorChanges_(mirror_.onChange([this](const MirrorChange &change) {
        if (users_ > 0 &&
            (change.stacking || change.appearance || change.properties || change.currentDesktop)) {
            stale_.emit(XCB_NONE);
        }
    })) {
    auto &events = connection.events();
    const auto erase = [this](const auto &event) { surfaces_.erase(event.window); };
    events_ = {
        events.on(
            event::damageNotify,
            [this](const auto &event, std::uint32_t sequence) { handleDamage(event, sequence); }),
        events.on(event::shapeNotify, [this](const auto &event) { handleShape(event); }),
        events.on(event::configureNotify, [this](const auto &event) { handleConfigure(event); }),
        events.on(event::unmapNotify, erase),
        events.on(event::mapNotify, erase),
        events.on(event::destroyNotify, erase)};
}

void WindowSurfaces::handleDamage(const xcb_damage_notify_event_t &event, std::uint32_t sequence) {
    const auto found = surfaces_.find(event.drawable);
    if (found == surfaces_.end() || !isAfter(sequence, found->second.followedSince)) {
        return;
    }
    auto &surface = found->second;
    const auto &area = event.area;
    surface.damagedBounds = surface.damagedBounds.united(
        {surface.geometry.x + surface.borderWidth + area.x,
         surface.geometry.y + surface.borderWidth + area.y, area.width, area.height});
    stale_.emit(event.drawable);
}

void WindowSurfaces::handleShape(const xcb_shape_notify_event_t &event) {
    const auto found = surfaces_.find(event.affected_window);
    if (found != surfaces_.end() && event.shape_kind == XCB_SHAPE_SK_BOUNDING) {
        found->second.shape.reset();
        stale_.emit(event.affected_window);
    }
}

// The server gives a window whose size changes other pixels; the named ones stay as they were,
// without any sign of it.
void WindowSurfaces::handleConfigure(const xcb_configure_notify_event_t &event) {
    const auto found = surfaces_.find(event.window);
    const int borders = 2 * event.border_width;
    if (found != surfaces_.end() && (event.width + borders != found->second.geometry.width ||
                                     event.height + borders != found->second.geometry.height)) {
        surfaces_.erase(found);
    }
}

const WindowSurface *WindowSurfaces::find(xcb_window_t window) {
    const auto *current = mirror_.find(window);
    // Some compositing managers keep windows mapped that are not to be seen.
    if (current == nullptr || !current->isMapped || current->isInputOnly ||
        current->isMinimized() || !mirror_.isOnShownDesktop(*current) ||
        current->geometry.isEmpty() || formats_.opaque(current->visual) == XCB_NONE) {
        surfaces_.erase(window);
        return nullptr;
    }
    auto &surface = surfaces_[window];
    if (surface.geometry.width != current->geometry.width ||
        surface.geometry.height != current->geometry.height) {
        surface = {};
    } else if (surface.shape && surface.geometry != current->geometry) {
        xcb_xfixes_translate_region(
            connection_, surface.shape.id(),
            static_cast<std::int16_t>(current->geometry.x - surface.geometry.x),
            static_cast<std::int16_t>(current->geometry.y - surface.geometry.y));
    }
    surface.geometry = current->geometry;
    surface.visible = current->visibleArea().intersection(current->geometry);
    surface.opacity = current->opacity;
    surface.borderWidth = current->borderWidth;
    if (!surface.picture) {
        name(*current, surface);
    }
    if (!surface.shape) {
        readShape(window, surface);
    }
    return &surface;
}

void WindowSurfaces::name(const MirrorWindow &named, WindowSurface &surface) {
    const auto window = named.frame;
    surface.damage = OwnedDamage(connection_);
    // What is there already is going to be drawn anyway.
    surface.followedSince = xcb_damage_create(connection_, surface.damage.id(), window,
                                              XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX)
                                .sequence;
    xcb_damage_subtract(connection_, surface.damage.id(), XCB_NONE, XCB_NONE);
    // The picture keeps the pixmap alive.
    const OwnedPixmap pixmap(connection_);
    xcb_composite_name_window_pixmap(connection_, window, pixmap.id());
    surface.picture = OwnedPicture(connection_);
    xcb_render_create_picture(connection_, surface.picture.id(), pixmap.id(),
                              formats_.opaque(named.visual), 0, nullptr);
    if (formats_.hasAlpha(named.visual)) {
        surface.alpha = OwnedPicture(connection_);
        xcb_render_create_picture(connection_, surface.alpha.id(), pixmap.id(),
                                  formats_.translucent(), 0, nullptr);
    }
    surface.version = ++lastVersion_;
}

void WindowSurfaces::readShape(xcb_window_t window, WindowSurface &surface) {
    surface.shape = OwnedRegion(connection_);
    xcb_xfixes_create_region_from_window(connection_, surface.shape.id(), window,
                                         XCB_SHAPE_SK_BOUNDING);
    moveToRoot(connection_, surface.shape.id(), surface.geometry, surface.borderWidth);
    // The server may know of a size whose event has not arrived.
    const auto area = toProtocol(surface.geometry);
    const OwnedRegion known(connection_);
    xcb_xfixes_create_region(connection_, known.id(), 1, &area);
    xcb_xfixes_intersect_region(connection_, surface.shape.id(), known.id(), surface.shape.id());
    surface.version = ++lastVersion_;
}

void WindowSurfaces::collectDamage(xcb_window_t window) {
    const auto found = surfaces_.find(window);
    if (found == surfaces_.end() || found->second.damagedBounds.isEmpty()) {
        return;
    }
    auto &surface = found->second;
    if (!damage_) {
        damage_ = makeEmptyRegion(connection_);
    }
    xcb_damage_subtract(connection_, surface.damage.id(), XCB_NONE, damage_.id());
    moveToRoot(connection_, damage_.id(), surface.geometry, surface.borderWidth);
    damaged_.emit({window, damage_.id(), std::exchange(surface.damagedBounds, {})});
}

Handle WindowSurfaces::onDamage(std::function<void(const SurfaceDamage &)> observer) {
    return damaged_.subscribe(std::move(observer));
}

Handle WindowSurfaces::onStale(std::function<void(xcb_window_t)> observer) {
    return stale_.subscribe(std::move(observer));
}

Handle WindowSurfaces::use() {
    ++users_;
    return Handle([this] {
        if (--users_ == 0) {
            surfaces_.clear();
        }
    });
}

} // namespace lumo::x11
