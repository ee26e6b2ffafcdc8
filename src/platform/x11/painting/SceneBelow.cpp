#include "platform/x11/painting/SceneBelow.h"

#include "platform/x11/painting/Wallpaper.h"
#include "platform/x11/painting/WindowSurfaces.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumo::x11 {

SceneBelow::SceneBelow(Connection &connection, WindowSurfaces &surfaces, Wallpaper &wallpaper,
                       Windows windows, LowerWindows lowerWindows)
    : connection_(connection)
    , surfaces_(surfaces)
    , wallpaper_(wallpaper)
    , windows_(windows)
    , lowerWindows_(std::move(lowerWindows))
    , changes_(makeEmptyRegion(connection))
    , scratch_(makeEmptyRegion(connection))
    , surfacesInUse_(surfaces.use())
    , damage_(surfaces.onDamage([this](const SurfaceDamage &damage) { addDamage(damage); }))
    , surfaceChanges_(surfaces.onStale([this](xcb_window_t window) {
        if (window == XCB_NONE || contains(window)) {
            stale_.emit();
        }
    }))
    , wallpaperChanges_(wallpaper.onChange([this] {
        invalidate();
        stale_.emit();
    })) {
}

void SceneBelow::setArea(const drawing::PixelRect &area) {
    if (area != area_) {
        area_ = area;
        invalidate();
    }
}

void SceneBelow::invalidate() {
    add(area_);
}

bool SceneBelow::contains(xcb_window_t window) const {
    return std::ranges::find(entries_, window, &SceneEntry::window) != entries_.end();
}

void SceneBelow::addDamage(const SurfaceDamage &damage) {
    if (contains(damage.window)) {
        xcb_xfixes_union_region(connection_, changes_.id(), damage.region, changes_.id());
        knownChanges_ |= damage.bounds.intersection(area_);
    }
}

void SceneBelow::add(const drawing::Region &changed) {
    const auto visible = changed & area_;
    if (!visible.isEmpty()) {
        knownChanges_ |= visible;
        const auto rectangles = toProtocol(visible);
        xcb_xfixes_set_region(connection_, scratch_.id(),
                              static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
        xcb_xfixes_union_region(connection_, changes_.id(), scratch_.id(), changes_.id());
    }
}

std::vector<SceneEntry> SceneBelow::currentEntries() {
    std::vector<SceneEntry> entries;
    for (const auto window : lowerWindows_()) {
        const auto *surface = surfaces_.find(window);
        if (surface != nullptr && surface->geometry.overlaps(area_)) {
            entries.push_back(
                {window, surface->geometry, surface->visible, surface->opacity, surface->version});
        }
    }
    return entries;
}

bool SceneBelow::update() {
    for (const auto &entry : entries_) {
        surfaces_.collectDamage(entry.window);
    }
    auto entries = currentEntries();
    add(drawing::Region(changedAreas(entries_, entries)));
    entries_ = std::move(entries);
    return !knownChanges_.isEmpty();
}

void SceneBelow::clip(xcb_render_picture_t picture, xcb_xfixes_region_t region) {
    xcb_xfixes_set_picture_clip_region(connection_, picture, region,
                                       static_cast<std::int16_t>(-area_.x),
                                       static_cast<std::int16_t>(-area_.y));
}

void SceneBelow::draw(xcb_render_picture_t onto) {
    auto visible = findVisible();
    std::ranges::reverse(visible);
    clip(onto, scratch_.id());
    wallpaper_.drawOnto(onto, area_);
    for (const auto &window : visible) {
        drawWindow(window, onto);
    }
    clip(onto, changes_.id());
}

std::vector<SceneBelow::VisibleWindow> SceneBelow::findVisible() {
    std::vector<VisibleWindow> visible;
    // From here on this is what no opaque window covers.
    xcb_xfixes_copy_region(connection_, changes_.id(), scratch_.id());
    for (std::size_t i = entries_.size(); i-- > 0;) {
        const auto &entry = entries_[i];
        const auto *surface =
            knownChanges_.overlaps(entry.geometry) ? surfaces_.find(entry.window) : nullptr;
        if (surface == nullptr) {
            continue;
        }
        if (clips_.size() == visible.size()) {
            clips_.push_back(makeEmptyRegion(connection_));
        }
        const auto clip = clips_[visible.size()].id();
        // A window that is gone has no shape, and the server refuses the intersection.
        xcb_xfixes_set_region(connection_, clip, 0, nullptr);
        xcb_xfixes_intersect_region(connection_, scratch_.id(), surface->shape.id(), clip);
        if (isOpaque(*surface)) {
            xcb_xfixes_subtract_region(connection_, scratch_.id(), clip, scratch_.id());
        }
        visible.push_back({surface, clip});
    }
    return visible;
}

bool SceneBelow::isOpaque(const WindowSurface &surface) const {
    return windows_ == Windows::opaque ||
           (!surface.alpha && surface.opacity >= 1 && surface.visible == surface.geometry);
}

void SceneBelow::drawWindow(const VisibleWindow &window, xcb_render_picture_t onto) {
    const auto &surface = *window.surface;
    const bool isBlended = windows_ == Windows::blended;
    // What shows nothing is transparent where there is alpha, but black where there is none.
    const auto &shown = isBlended && !surface.alpha ? surface.visible : surface.geometry;
    clip(onto, window.clip);
    const auto picture = isBlended && surface.alpha ? surface.alpha.id() : surface.picture.id();
    OwnedPicture opacity;
    if (isBlended && surface.opacity < 1) {
        opacity = OwnedPicture(connection_);
        const auto share = static_cast<std::uint16_t>(std::lround(surface.opacity * 0xffff));
        xcb_render_create_solid_fill(connection_, opacity.id(), {0, 0, 0, share});
    }
    const auto operation =
        opacity || (isBlended && surface.alpha) ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC;
    xcb_render_composite(connection_, static_cast<std::uint8_t>(operation), picture, opacity.id(),
                         onto, static_cast<std::int16_t>(shown.x - surface.geometry.x),
                         static_cast<std::int16_t>(shown.y - surface.geometry.y), 0, 0,
                         static_cast<std::int16_t>(shown.x - area_.x),
                         static_cast<std::int16_t>(shown.y - area_.y),
                         static_cast<std::uint16_t>(std::max(shown.width, 0)),
                         static_cast<std::uint16_t>(std::max(shown.height, 0)));
}

void SceneBelow::settle() {
    xcb_xfixes_set_region(connection_, changes_.id(), 0, nullptr);
    knownChanges_ = {};
}

Handle SceneBelow::onStale(std::function<void()> observer) {
    return stale_.subscribe(std::move(observer));
}

} // namespace lumo::x11
