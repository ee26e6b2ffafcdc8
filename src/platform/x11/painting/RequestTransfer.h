#pragma once

#include "platform/x11/painting/TileTransfer.h"
#include "support/Lifetime.h"

namespace lumo::x11 {

class Connection;

// Through the connection, in ordinary requests and replies, one tile after the other.
class RequestTransfer final : public TileTransfer {
  public:
    // The connection outlives the transfer.
    explicit RequestTransfer(Connection &connection)
        : connection_(connection) {}

    void start(const TileRoute &route, std::vector<Tile> tiles, Draw draw, Done done) override;
    void cancel() override { ++round_; }

  private:
    void fetchNext();
    void put(const drawing::PixelRect &part);

    Connection &connection_;
    TileRoute route_;
    std::vector<Tile> tiles_; // those that are left, the next one last
    Draw draw_;
    Done done_;
    std::vector<std::uint8_t> pixels_; // of one tile
    unsigned round_ = 0;               // which start() replies must belong to
    Lifetime lifetime_;
};

} // namespace lumo::x11
