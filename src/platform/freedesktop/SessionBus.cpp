#include "platform/freedesktop/SessionBus.h"

#include "platform/freedesktop/GlibPointers.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr double firstPause = 2; // seconds
constexpr double longestPause = 60;

} // namespace

std::string sessionBusAddress() {
    const char *address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') {
        return address;
    }
    const char *runtimeDirectory = g_getenv("XDG_RUNTIME_DIR");
    if (runtimeDirectory == nullptr || *runtimeDirectory == '\0') {
        return {};
    }
    const auto socket = std::filesystem::path(runtimeDirectory) / "bus";
    std::error_code error;
    if (!std::filesystem::exists(socket, error)) {
        return {};
    }
    char *escaped = g_dbus_address_escape_value(socket.c_str());
    auto result = "unix:path=" + std::string(escaped);
    g_free(escaped);
    return result;
}

SessionBus::SessionBus(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , cancellation_(std::make_unique<Cancellation>())
    , pause_(firstPause) {
    connect();
}

SessionBus::~SessionBus() {
    if (connection_ != nullptr) {
        g_signal_handler_disconnect(connection_, closedSignal_);
        g_dbus_connection_close(connection_, nullptr, nullptr, nullptr);
        g_object_unref(connection_);
    }
}

Handle SessionBus::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

void SessionBus::connect() {
    const auto address = sessionBusAddress();
    if (address.empty()) {
        tryAgainLater();
        return;
    }
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    using Watched = std::pair<SessionBus *, Lifetime::Watch>;
    const auto connected = +[](GObject *, GAsyncResult *result, gpointer data) {
        const std::unique_ptr<Watched> watched(static_cast<Watched *>(data));
        GDBusConnection *connection = g_dbus_connection_new_for_address_finish(result, nullptr);
        if (watched->second) {
            watched->first->adopt(connection);
        } else if (connection != nullptr) {
            g_object_unref(connection);
        }
    };
    g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, cancellation_->get(),
                                      connected, new Watched(this, lifetime_.watch()));
}

void SessionBus::adopt(GDBusConnection *connection) {
    if (connection == nullptr) {
        tryAgainLater();
        return;
    }
    connection_ = connection;
    pause_ = firstPause;
    g_dbus_connection_set_exit_on_close(connection_, FALSE);
    const auto closed = +[](GDBusConnection *, gboolean, GError *, gpointer self) {
        static_cast<SessionBus *>(self)->drop();
    };
    closedSignal_ = g_signal_connect(connection_, "closed", G_CALLBACK(closed), this);
    changed_.emit();
}

void SessionBus::drop() {
    auto *connection = std::exchange(connection_, nullptr);
    g_signal_handler_disconnect(connection, closedSignal_);
    changed_.emit();
    g_object_unref(connection);
    tryAgainLater();
}

void SessionBus::tryAgainLater() {
    nextAttempt_ = mainLoop_.after(pause_, [this] { connect(); });
    pause_ = std::min(2 * pause_, longestPause);
}

} // namespace lumo::freedesktop
