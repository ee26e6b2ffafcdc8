#include "platform/freedesktop/PortalAppearance.h"

#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>

#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *portalName = "org.freedesktop.portal.Desktop";
constexpr const char *portalPath = "/org/freedesktop/portal/desktop";
constexpr const char *settingsInterface = "org.freedesktop.portal.Settings";
constexpr const char *appearanceNamespace = "org.freedesktop.appearance";
constexpr const char *colorSchemeKey = "color-scheme";

// The values of the key; every other one is "no preference".
constexpr unsigned darkScheme = 1;
constexpr unsigned lightScheme = 2;

} // namespace

PortalAppearance::PortalAppearance(SessionBus &bus)
    : bus_(bus) {
}

Handle PortalAppearance::onChange(std::function<void()> observer) {
    if (!busChanges_) {
        busChanges_ = bus_.onChange([this] { listen(); });
        listen();
    }
    return changed_.subscribe(std::move(observer));
}

// To the announcements first, so that no change falls between the question and them. Without a
// proxy, which every setting of the desktop would wake up, and which would ask for the name's owner
// once more.
void PortalAppearance::listen() {
    auto *connection = bus_.connection();
    if (connection == nullptr) {
        announcements_.reset();
        return;
    }
    const auto announced = +[](GDBusConnection *, const char *, const char *, const char *,
                               const char *, GVariant *arguments, gpointer self) {
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssv)")) == FALSE) {
            return;
        }
        const char *key = nullptr;
        GVariant *value = nullptr;
        g_variant_get(arguments, "(&s&sv)", nullptr, &key, &value);
        const GlibPointer<GVariant> owned(value);
        if (std::string_view(key) == colorSchemeKey) {
            static_cast<PortalAppearance *>(self)->take(value);
        }
    };
    const auto subscription = g_dbus_connection_signal_subscribe(
        connection, portalName, settingsInterface, "SettingChanged", portalPath,
        appearanceNamespace, G_DBUS_SIGNAL_FLAGS_NONE, announced, this, nullptr);
    announcements_ = Handle([held = g_object_ref(connection), subscription] {
        g_dbus_connection_signal_unsubscribe(held, subscription);
        g_object_unref(held);
    });
    ask();
}

void PortalAppearance::ask() {
    calls_.start(
        [this](GObject *source, GAsyncResult *result) {
            const GlibPointer<GVariant> reply(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
            if (reply) {
                const GlibPointer<GVariant> value(g_variant_get_child_value(reply.get(), 0));
                take(value.get());
            }
        },
        g_dbus_connection_call, bus_.connection(), portalName, portalPath, settingsInterface,
        "Read", g_variant_new("(ss)", appearanceNamespace, colorSchemeKey), G_VARIANT_TYPE("(v)"),
        G_DBUS_CALL_FLAGS_NONE, longestCall);
}

// The value may come in one box or more.
void PortalAppearance::take(GVariant *colorScheme) {
    GlibPointer<GVariant> value(g_variant_ref(colorScheme));
    while (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT) != FALSE) {
        value.reset(g_variant_get_variant(value.get()));
    }
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_UINT32) == FALSE) {
        return;
    }
    const auto scheme = g_variant_get_uint32(value.get());
    const auto next = scheme == darkScheme    ? std::optional(true)
                      : scheme == lightScheme ? std::optional(false)
                                              : std::nullopt;
    if (std::exchange(prefersDark_, next) != next) {
        changed_.emit();
    }
}

} // namespace lumo::freedesktop
