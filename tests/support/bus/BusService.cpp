#include "bus/BusService.h"

#include <gio/gio.h>

#include <stdexcept>

namespace lumo::test {

BusService::BusService(const std::string &address)
    : connection_(g_dbus_connection_new_for_address_sync(
          address.c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {
    if (!connection_) {
        throw std::runtime_error("no message bus at " + address);
    }
}

BusService::~BusService() {
    if (name_ != 0) {
        g_bus_unown_name(name_);
    }
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void BusService::offer(void *skeleton, const char *path) const {
    if (g_dbus_interface_skeleton_export(G_DBUS_INTERFACE_SKELETON(skeleton), connection_.get(),
                                         path, nullptr) == FALSE) {
        throw std::runtime_error(std::string("there is an object at ") + path);
    }
}

void BusService::takeName(const char *name) {
    name_ = g_bus_own_name_on_connection(connection_.get(), name, G_BUS_NAME_OWNER_FLAGS_NONE,
                                         nullptr, nullptr, nullptr, nullptr);
}

} // namespace lumo::test
