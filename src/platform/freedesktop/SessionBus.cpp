#include "platform/freedesktop/SessionBus.h"

#include "platform/freedesktop/GlibSignal.h"

#include <gio/gio.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr double firstPause = 2; // seconds
constexpr double longestPause = 60;

// The handle of what keeps the program running when a message bus ends to which a module of GIO is
// connected by GIO's shared connection. That ends the process by default, and who makes such a
// connection, and when, is the modules' own affair; so each one is asked not to in the moment in
// which it closes, before the signal's own handler looks.
Handle outliveSharedConnections() {
    auto *type = g_type_class_ref(G_TYPE_DBUS_CONNECTION); // without which there is no signal
    const auto closed = g_signal_lookup("closed", G_TYPE_DBUS_CONNECTION);
    const auto hook = g_signal_add_emission_hook(
        closed, 0,
        [](GSignalInvocationHint *, guint, const GValue *values, gpointer) -> gboolean {
            auto *connection = G_DBUS_CONNECTION(g_value_get_object(values));
            g_dbus_connection_set_exit_on_close(connection, FALSE);
            return TRUE;
        },
        nullptr, nullptr);
    return Handle([type, closed, hook] {
        g_signal_remove_emission_hook(closed, hook);
        g_type_class_unref(type);
    });
}

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
    const GlibPointer<char> escaped(g_dbus_address_escape_value(socket.c_str()));
    return "unix:path=" + std::string(escaped.get());
}

void connectToBus(AsyncCalls &calls, const std::string &address,
                  std::function<void(GlibPointer<GDBusConnection>, GlibPointer<GError>)> finish) {
    calls.start(
        [finish = std::move(finish)](GObject *, GAsyncResult *result) {
            GError *error = nullptr;
            GlibPointer<GDBusConnection> connection(
                g_dbus_connection_new_for_address_finish(result, &error));
            finish(std::move(connection), GlibPointer<GError>(error));
        },
        g_dbus_connection_new_for_address, address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr);
}

SessionBus::SessionBus(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , pause_(firstPause)
    , sharedConnections_(outliveSharedConnections()) {
    connect();
}

SessionBus::~SessionBus() {
    if (connection_) {
        closed_.reset();
        g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
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
    connectToBus(calls_, address,
                 [this](GlibPointer<GDBusConnection> connection, const auto & /*error*/) {
                     adopt(std::move(connection));
                 });
}

void SessionBus::adopt(GlibPointer<GDBusConnection> connection) {
    if (!connection) {
        tryAgainLater();
        return;
    }
    connection_ = std::move(connection);
    pause_ = firstPause;
    const auto closed = +[](GDBusConnection *, gboolean, GError *, gpointer self) {
        static_cast<SessionBus *>(self)->drop();
    };
    closed_ = connectToSignal(connection_.get(), "closed", G_CALLBACK(closed), this);
    changed_.emit();
}

// Observers may still need what they hold of the connection, so that it goes last.
void SessionBus::drop() {
    const auto connection = std::move(connection_);
    closed_.reset();
    changed_.emit();
    tryAgainLater();
}

void SessionBus::tryAgainLater() {
    nextAttempt_ = mainLoop_.after(pause_, [this] { connect(); });
    pause_ = std::min(2 * pause_, longestPause);
}

} // namespace lumo::freedesktop
