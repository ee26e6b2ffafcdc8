#include "platform/freedesktop/DesktopNotifications.h"

#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>

#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *serviceName = "org.freedesktop.Notifications";
constexpr const char *objectPath = "/org/freedesktop/Notifications";
constexpr const char *defaultSound = "dialog-information"; // a name that every sound theme has

constexpr int leaveItToTheService = -1; // how long the notification stays
constexpr int longestCall = 10000;      // milliseconds

GVariant *notifyArguments(const UserNotification &notification) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                          g_variant_new_string(program::identifier));
    g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string(defaultSound));
    return g_variant_new("(susssasa{sv}i)", program::name, 0U, program::identifier,
                         notification.title.c_str(), notification.body.c_str(), nullptr, &hints,
                         leaveItToTheService);
}

} // namespace

// One notification on its way. Each step hands it to the next, by way of the bus's callbacks on the
// main thread.
class DesktopNotifications::Delivery {
  public:
    using Completion = std::function<void(const std::optional<std::string> &)>;

    static void begin(UserNotification notification, Completion completion,
                      GCancellable *cancellable, const std::string &address) {
        constexpr auto flags =
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        auto delivery = std::unique_ptr<Delivery>(
            new Delivery(std::move(notification), std::move(completion), cancellable));
        g_dbus_connection_new_for_address(address.c_str(), flags, nullptr, cancellable, connected,
                                          delivery.release());
    }

    ~Delivery() {
        g_clear_object(&connection_);
        g_object_unref(cancellable_);
    }
    Delivery(const Delivery &) = delete;
    Delivery &operator=(const Delivery &) = delete;

  private:
    Delivery(UserNotification notification, Completion completion, GCancellable *cancellable)
        : notification_(std::move(notification))
        , completion_(std::move(completion))
        , cancellable_(G_CANCELLABLE(g_object_ref(cancellable))) {}

    static void connected(GObject * /*source*/, GAsyncResult *result, gpointer data) {
        std::unique_ptr<Delivery> delivery(static_cast<Delivery *>(data));
        GError *error = nullptr;
        delivery->connection_ = g_dbus_connection_new_for_address_finish(result, &error);
        if (delivery->connection_ == nullptr) {
            delivery->finish(error);
            return;
        }
        auto &self = *delivery;
        g_dbus_connection_call(self.connection_, serviceName, objectPath, serviceName, "Notify",
                               notifyArguments(self.notification_), G_VARIANT_TYPE("(u)"),
                               G_DBUS_CALL_FLAGS_NONE, longestCall, self.cancellable_, answered,
                               delivery.release());
    }

    static void answered(GObject *source, GAsyncResult *result, gpointer data) {
        const std::unique_ptr<Delivery> delivery(static_cast<Delivery *>(data));
        GError *error = nullptr;
        GVariant *reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (reply != nullptr) {
            g_variant_unref(reply);
        }
        g_dbus_connection_close(delivery->connection_, nullptr, nullptr, nullptr);
        delivery->finish(error);
    }

    // Takes the error.
    void finish(GError *error) {
        if (error == nullptr) {
            completion_(std::nullopt);
            return;
        }
        g_dbus_error_strip_remote_error(error);
        const std::string message = error->message;
        g_error_free(error);
        completion_(message);
    }

    UserNotification notification_;
    Completion completion_;
    GCancellable *cancellable_;
    GDBusConnection *connection_ = nullptr;
};

DesktopNotifications::DesktopNotifications(MainLoop &mainLoop)
    : mainLoop_(mainLoop)
    , cancellation_(std::make_unique<Cancellation>()) {
}

DesktopNotifications::~DesktopNotifications() = default;

void DesktopNotifications::add(
    const UserNotification &notification,
    std::function<void(const std::optional<std::string> &error)> completion) {
    auto guarded = lifetime_.guard(std::move(completion));
    const auto address = sessionBusAddress();
    if (address.empty()) {
        mainLoop_.post(
            [guarded]() mutable { guarded(std::optional<std::string>("no session bus")); });
        return;
    }
    Delivery::begin(notification, std::move(guarded), cancellation_->get(), address);
}

} // namespace lumo::freedesktop
