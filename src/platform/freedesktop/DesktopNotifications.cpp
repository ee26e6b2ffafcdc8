#include "platform/freedesktop/DesktopNotifications.h"

#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <org.freedesktop.Notifications.h>

#include <array>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *notificationsName = "org.freedesktop.Notifications";
constexpr const char *notificationsPath = "/org/freedesktop/Notifications";
constexpr const char *defaultSound = "dialog-information"; // a name that every sound theme has

constexpr int leaveItToTheService = -1; // how long the notification stays

// The proxy serves one call: it keeps nothing up to date.
constexpr auto proxyFlags = static_cast<GDBusProxyFlags>(
    G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS |
    G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START_AT_CONSTRUCTION | G_DBUS_PROXY_FLAGS_NO_MATCH_RULE);

GVariant *hints() {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                          g_variant_new_string(program::identifier));
    g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string(defaultSound));
    return g_variant_builder_end(&hints);
}

// What is to be said of the error; absent without one.
std::optional<std::string> textOf(const GlibPointer<GError> &error) {
    if (!error) {
        return std::nullopt;
    }
    g_dbus_error_strip_remote_error(error.get());
    return error->message;
}

struct CloseConnection {
    void operator()(GDBusConnection *connection) const {
        g_dbus_connection_close(connection, nullptr, nullptr, nullptr);
        g_object_unref(connection);
    }
};

} // namespace

DesktopNotifications::DesktopNotifications(MainLoop &mainLoop)
    : mainLoop_(mainLoop) {
}

void DesktopNotifications::add(const UserNotification &notification, Completion completion) {
    const auto address = sessionBusAddress();
    if (address.empty()) {
        mainLoop_.post(lifetime_.guard(
            [completion = std::move(completion)] { completion("no session bus"); }));
        return;
    }
    connectToBus(
        calls_, address,
        [this, notification, completion = std::move(completion)](
            GlibPointer<GDBusConnection> connection, GlibPointer<GError> error) {
            if (connection) {
                findService({connection.release(), CloseConnection()}, notification, completion);
            } else {
                completion(textOf(error));
            }
        });
}

void DesktopNotifications::findService(const std::shared_ptr<GDBusConnection> &connection,
                                       const UserNotification &notification,
                                       const Completion &completion) {
    calls_.start(
        [=, this](GObject *, GAsyncResult *result) {
            GError *raw = nullptr;
            const GlibPointer<DbusNotifications> service(
                dbus_notifications_proxy_new_finish(result, &raw));
            const GlibPointer<GError> error(raw);
            if (service) {
                send(connection, service.get(), notification, completion);
            } else {
                completion(textOf(error));
            }
        },
        dbus_notifications_proxy_new, connection.get(), proxyFlags, notificationsName,
        notificationsPath);
}

void DesktopNotifications::send(const std::shared_ptr<GDBusConnection> &connection,
                                DbusNotifications *service, const UserNotification &notification,
                                const Completion &completion) {
    g_dbus_proxy_set_default_timeout(G_DBUS_PROXY(service), longestCall);
    constexpr std::array<const char *, 1> noActions{nullptr};
    calls_.start(
        [connection, completion](GObject *source, GAsyncResult *result) {
            GError *raw = nullptr;
            dbus_notifications_call_notify_finish(DBUS_NOTIFICATIONS(source), nullptr, result,
                                                  &raw);
            completion(textOf(GlibPointer<GError>(raw)));
        },
        dbus_notifications_call_notify, service, program::name, 0U, program::identifier,
        notification.title.c_str(), notification.body.c_str(), noActions.data(), hints(),
        leaveItToTheService);
}

} // namespace lumo::freedesktop
