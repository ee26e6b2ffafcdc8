#pragma once

#include "support/Handle.h"

namespace lumo::x11 {

class Connection;

// Has the server keep every top-level window's pixels apart from the screen's, so that they are
// whole and current whatever covers them. Goes together with a compositing manager, which asks for
// the same in its own way: when that ends, the pixels are still there.
class Redirection {
  public:
    explicit Redirection(Connection &connection)
        : connection_(connection) {}

    // In force until the last of these is released. Does nothing on a server that can't.
    Handle hold();

  private:
    Connection &connection_;
    int holders_ = 0;
};

} // namespace lumo::x11
