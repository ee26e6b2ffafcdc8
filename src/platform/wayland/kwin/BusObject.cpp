#include "platform/wayland/kwin/BusObject.h"

#include <gio/gio.h>

#include <utility>

namespace lumo::wayland::kwin {

void BusObject::call(freedesktop::AsyncCalls &calls, GDBusConnection *connection,
                     const char *method, GVariant *arguments, Reply finish) const {
    calls.start(
        [finish = std::move(finish)](GObject *source, GAsyncResult *result) {
            const freedesktop::GlibPointer<GVariant> reply(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
            finish(reply.get());
        },
        g_dbus_connection_call, connection, service, path.c_str(), interface, method, arguments,
        nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, freedesktop::longestCall);
}

void BusObject::tell(GDBusConnection *connection, const char *method, GVariant *arguments) const {
    g_dbus_connection_call(connection, service, path.c_str(), interface, method, arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, freedesktop::longestCall, nullptr,
                           nullptr, nullptr);
}

} // namespace lumo::wayland::kwin
