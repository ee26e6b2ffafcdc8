#include "platform/x11/painting/SharedMemoryTransfer.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"

#include <utility>

namespace lumo::x11 {

namespace {

// False when there is no such memory to be had.
bool growTo(SharedMemory &memory, Connection &connection, std::size_t size) {
    if (memory.size() < size) {
        memory = SharedMemory(connection, size);
    }
    return static_cast<bool>(memory);
}

} // namespace

bool SharedMemoryTransfer::reserve(const std::vector<Tile> &tiles) {
    std::size_t texels = 0;
    std::size_t pixels = 0;
    for (const auto &tile : tiles) {
        texels += bytesOf(tile.texels);
        pixels += bytesOf(tile.pixels);
    }
    return growTo(texels_, connection_, texels) && growTo(pixels_, connection_, pixels);
}

void SharedMemoryTransfer::start(const TileRoute &route, std::vector<Tile> tiles, Draw draw,
                                 Done done) {
    cancel();
    if (!reserve(tiles)) {
        done(false);
        return;
    }
    // Replies come in the order of requests, so the last one stands for all.
    xcb_shm_get_image_cookie_t cookie{};
    std::size_t offset = 0;
    for (const auto &tile : tiles) {
        const auto from = toProtocol(tile.texels);
        cookie = xcb_shm_get_image(connection_, route.source, from.x, from.y, from.width,
                                   from.height, ~std::uint32_t{0}, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                   texels_.segment(), static_cast<std::uint32_t>(offset));
        offset += bytesOf(tile.texels);
    }
    connection_.whenReplied<xcb_shm_get_image_reply_t>(
        cookie,
        lifetime_.guard([this, round = round_, route, tiles = std::move(tiles),
                         draw = std::move(draw), done = std::move(done)](const auto *reply) {
            if (round != round_) {
                return;
            }
            if (reply != nullptr) {
                drawAll(route, tiles, draw);
            }
            done(reply != nullptr);
        }));
}

void SharedMemoryTransfer::drawAll(const TileRoute &route, const std::vector<Tile> &tiles,
                                   const Draw &draw) {
    const auto *texels = texels_.bytes();
    std::size_t offset = 0;
    for (const auto &tile : tiles) {
        draw(tile, texels, pixels_.bytes() + offset);
        const auto to = toProtocol(tile.pixels);
        xcb_shm_put_image(connection_, route.destination, route.context, to.width, to.height, 0, 0,
                          to.width, to.height, to.x, to.y, route.depth, XCB_IMAGE_FORMAT_Z_PIXMAP,
                          0, pixels_.segment(), static_cast<std::uint32_t>(offset));
        texels += bytesOf(tile.texels);
        offset += bytesOf(tile.pixels);
    }
}

} // namespace lumo::x11
