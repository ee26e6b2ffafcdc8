#include "bus/StatusNotifierHost.h"

#include "platform/freedesktop/GlibSignal.h"

#include <gio/gio.h>
#include <org.kde.StatusNotifierWatcher.h>

#include <utility>

namespace lumo::test {

namespace {

constexpr const char *watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char *watcherPath = "/StatusNotifierWatcher";
constexpr const char *itemPath = "/StatusNotifierItem";
constexpr const char *itemInterface = "org.kde.StatusNotifierItem";

} // namespace

struct StatusNotifierHost::Methods {
    static gboolean registerItem(DbusStatusNotifierWatcher *watcher,
                                 GDBusMethodInvocation *invocation, const char *item,
                                 gpointer self) {
        auto &host = *static_cast<StatusNotifierHost *>(self);
        host.items_.emplace_back(item);
        host.listen(item);
        dbus_status_notifier_watcher_complete_register_status_notifier_item(watcher, invocation);
        return TRUE;
    }
};

StatusNotifierHost::StatusNotifierHost(const std::string &address)
    : service_(address)
    , watcher_(dbus_status_notifier_watcher_skeleton_new())
    , registrations_(freedesktop::connectToSignal(watcher_.get(),
                                                  "handle-register-status-notifier-item",
                                                  G_CALLBACK(&Methods::registerItem), this)) {
    service_.offer(watcher_.get(), watcherPath);
    service_.takeName(watcherName);
}

void StatusNotifierHost::setHost(bool isHost) {
    dbus_status_notifier_watcher_set_is_status_notifier_host_registered(watcher_.get(),
                                                                        isHost ? TRUE : FALSE);
    isHost ? dbus_status_notifier_watcher_emit_status_notifier_host_registered(watcher_.get())
           : dbus_status_notifier_watcher_emit_status_notifier_host_unregistered(watcher_.get());
}

void StatusNotifierHost::callItem(const char *method, int x, int y) {
    calls_.start([](GObject *, GAsyncResult *) {}, g_dbus_connection_call, service_.connection(),
                 items_.back().c_str(), itemPath, itemInterface, method,
                 g_variant_new("(ii)", x, y), nullptr, G_DBUS_CALL_FLAGS_NONE, -1);
}

void StatusNotifierHost::askForProperties() {
    properties_.clear();
    calls_.start(
        [this](GObject *source, GAsyncResult *result) {
            const freedesktop::GlibPointer<GVariant> reply(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
            if (reply) {
                const freedesktop::GlibPointer<char> text(g_variant_print(reply.get(), FALSE));
                properties_ = text.get();
            }
        },
        g_dbus_connection_call, service_.connection(), items_.back().c_str(), itemPath,
        "org.freedesktop.DBus.Properties", "GetAll", g_variant_new("(s)", itemInterface), nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1);
}

std::vector<std::string> StatusNotifierHost::takeSignals() {
    return std::exchange(signals_, {});
}

void StatusNotifierHost::listen(const char *item) {
    const auto received = +[](GDBusConnection *, const char *, const char *, const char *,
                              const char *signal, GVariant *, gpointer self) {
        static_cast<StatusNotifierHost *>(self)->signals_.emplace_back(signal);
    };
    const auto subscription = g_dbus_connection_signal_subscribe(
        service_.connection(), item, nullptr, nullptr, itemPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        received, this, nullptr);
    itemSignals_ = Handle([connection = service_.connection(), subscription] {
        g_dbus_connection_signal_unsubscribe(connection, subscription);
    });
}

} // namespace lumo::test
