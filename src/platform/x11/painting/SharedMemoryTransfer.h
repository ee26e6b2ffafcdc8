#pragma once

#include "platform/x11/painting/TileTransfer.h"
#include "platform/x11/server/SharedMemory.h"
#include "support/Lifetime.h"

namespace lumo::x11 {

class Connection;

// Through memory shared with a server on this machine. Fails where the server is elsewhere, which
// shows with the first reply.
class SharedMemoryTransfer final : public TileTransfer {
  public:
    // The connection has MIT-SHM and outlives the transfer.
    explicit SharedMemoryTransfer(Connection &connection)
        : connection_(connection) {}

    void start(const TileRoute &route, std::vector<Tile> tiles, Draw draw, Done done) override;
    void cancel() override { ++round_; }

  private:
    bool reserve(const std::vector<Tile> &tiles);
    void drawAll(const TileRoute &route, const std::vector<Tile> &tiles, const Draw &draw);

    Connection &connection_;
    SharedMemory texels_;
    SharedMemory pixels_;
    unsigned round_ = 0; // which start() replies must belong to
    Lifetime lifetime_;
};

} // namespace lumo::x11
