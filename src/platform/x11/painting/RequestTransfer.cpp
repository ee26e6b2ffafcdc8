#include "platform/x11/painting/RequestTransfer.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

void RequestTransfer::start(const TileRoute &route, std::vector<Tile> tiles, Draw draw, Done done) {
    cancel();
    route_ = route;
    tiles_ = std::move(tiles);
    std::ranges::reverse(tiles_);
    draw_ = std::move(draw);
    done_ = std::move(done);
    fetchNext();
}

void RequestTransfer::fetchNext() {
    if (tiles_.empty()) {
        std::exchange(done_, nullptr)(true);
        return;
    }
    const auto from = toProtocol(tiles_.back().texels);
    const auto cookie = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, route_.source, from.x,
                                      from.y, from.width, from.height, ~std::uint32_t{0});
    connection_.whenReplied<xcb_get_image_reply_t>(
        cookie, lifetime_.guard([this, round = round_](const auto *reply) {
            if (round != round_) {
                return;
            }
            if (reply == nullptr) {
                std::exchange(done_, nullptr)(false);
                return;
            }
            const auto tile = tiles_.back();
            tiles_.pop_back();
            pixels_.resize(bytesOf(tile.pixels));
            draw_(tile, xcb_get_image_data(reply), pixels_.data());
            put(tile.pixels);
            fetchNext();
        }));
}

void RequestTransfer::put(const drawing::PixelRect &part) {
    const auto rowBytes = bytesPerPixel * static_cast<std::size_t>(part.width);
    const auto most = static_cast<std::size_t>(xcb_get_maximum_request_length(connection_)) * 4 -
                      sizeof(xcb_put_image_request_t) - sizeof(std::uint32_t);
    const int rowsAtOnce = std::max(1, static_cast<int>(most / rowBytes));
    for (int row = 0; row < part.height; row += rowsAtOnce) {
        const auto to =
            toProtocol({part.x, part.y + row, part.width, std::min(rowsAtOnce, part.height - row)});
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, route_.destination, route_.context,
                      to.width, to.height, to.x, to.y, 0, route_.depth,
                      static_cast<std::uint32_t>(rowBytes * to.height),
                      pixels_.data() + static_cast<std::size_t>(row) * rowBytes);
    }
}

} // namespace lumo::x11
