#pragma once

#include "platform/freedesktop/GlibPointers.h"

#include <string>

namespace lumo::test {

// Another program on a message bus, played by the test on the main loop's thread.
class BusService {
  public:
    // Connects to the bus at the address, waiting for it.
    explicit BusService(const std::string &address);

    // Leaves the bus, waiting for that.
    ~BusService();
    BusService(const BusService &) = delete;
    BusService &operator=(const BusService &) = delete;

    GDBusConnection *connection() const { return connection_.get(); }

    // Offers a skeleton at the path. Once the name is taken, other programs look for the objects.
    void offer(void *skeleton, const char *path) const;
    void takeName(const char *name);

  private:
    freedesktop::GlibPointer<GDBusConnection> connection_;
    unsigned name_ = 0;
};

} // namespace lumo::test
