#pragma once

#include "platform/x11/server/Connection.h"

#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdint>
#include <utility>

namespace lumo::x11 {

// An object of ours in the X server, freed with its owner. Move-only; the connection must outlive
// it. Freeing what the server has already dropped does no harm.
template <xcb_void_cookie_t (*freeRequest)(xcb_connection_t *, std::uint32_t)>
class ServerResource {
  public:
    ServerResource() = default;

    // With a fresh identifier, for which the caller makes the object.
    explicit ServerResource(xcb_connection_t *connection)
        : connection_(connection)
        , id_(xcb_generate_id(connection)) {}

    ~ServerResource() { reset(); }

    ServerResource(ServerResource &&other) noexcept
        : connection_(other.connection_)
        , id_(std::exchange(other.id_, XCB_NONE)) {}

    ServerResource &operator=(ServerResource &&other) noexcept {
        if (this != &other) {
            reset();
            connection_ = other.connection_;
            id_ = std::exchange(other.id_, XCB_NONE);
        }
        return *this;
    }

    ServerResource(const ServerResource &) = delete;
    ServerResource &operator=(const ServerResource &) = delete;

    std::uint32_t id() const { return id_; }
    explicit operator bool() const { return id_ != XCB_NONE; }

    void reset() {
        if (id_ != XCB_NONE) {
            freeRequest(connection_, std::exchange(id_, XCB_NONE));
        }
    }

  private:
    xcb_connection_t *connection_ = nullptr;
    std::uint32_t id_ = XCB_NONE;
};

using OwnedColormap = ServerResource<xcb_free_colormap>;
using OwnedDamage = ServerResource<xcb_damage_destroy>;
using OwnedGraphicsContext = ServerResource<xcb_free_gc>;
using OwnedPicture = ServerResource<xcb_render_free_picture>;
using OwnedPixmap = ServerResource<xcb_free_pixmap>;
using OwnedRegion = ServerResource<xcb_xfixes_destroy_region>;
using OwnedWindow = ServerResource<xcb_destroy_window>;

// A region without any point.
inline OwnedRegion makeEmptyRegion(xcb_connection_t *connection) {
    OwnedRegion region(connection);
    xcb_xfixes_create_region(connection, region.id(), 0, nullptr);
    return region;
}

} // namespace lumo::x11
