#include "platform/freedesktop/StatusNotifierItem.h"

#include "platform/freedesktop/BusNames.h"
#include "platform/freedesktop/DotPicture.h"
#include "platform/freedesktop/GlibSignal.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <org.kde.StatusNotifierItem.h>
#include <org.kde.StatusNotifierWatcher.h>

#include <array>
#include <cstddef>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char *watcherPath = "/StatusNotifierWatcher";
constexpr const char *itemPath = "/StatusNotifierItem";

// The sides of the pictures that are offered, in pixels; hosts take the one that fits best.
constexpr std::array pictureSides{16, 22, 24, 32, 44, 48};

GVariant *noPictures() {
    return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
}

// Declared well-formed, which any bytes are: GIO compares properties that may not be by printing
// both, and that would take most of the time that switching on or off takes.
GVariant *variantOf(const Bytes &bytes) {
    auto *copy = g_bytes_new(bytes.data(), bytes.size());
    auto *variant = g_variant_new_from_bytes(G_VARIANT_TYPE_BYTESTRING, copy, TRUE);
    g_bytes_unref(copy);
    return variant;
}

// Each as width, height, and alpha, red, green and blue of each pixel, not premultiplied.
GVariant *pictures(const StatusTitle &title) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(iiay)"));
    for (const int side : pictureSides) {
        const auto image = dotPicture(title, side);
        Bytes argb;
        argb.reserve(image.pixels.size());
        for (std::size_t at = 0; at < image.pixels.size(); at += 4) {
            const unsigned alpha = image.pixels[at + 3];
            argb.push_back(image.pixels[at + 3]);
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const unsigned color = image.pixels[at + channel];
                argb.push_back(static_cast<std::uint8_t>(alpha == 0 ? 0 : color * 255 / alpha));
            }
        }
        g_variant_builder_add(&list, "(ii@ay)", side, side, variantOf(argb));
    }
    return g_variant_builder_end(&list);
}

GVariant *toolTip(const std::string &text) {
    return g_variant_new("(s@a(iiay)ss)", "", noPictures(), text.c_str(), "");
}

const char *statusText(bool isHidden) {
    return isHidden ? "Passive" : "Active";
}

// With everything that never changes, and the rest empty.
GlibPointer<DbusStatusNotifierItem> makeItem() {
    GlibPointer<DbusStatusNotifierItem> item(dbus_status_notifier_item_skeleton_new());
    auto *raw = item.get();
    dbus_status_notifier_item_set_category(raw, "ApplicationStatus");
    dbus_status_notifier_item_set_id(raw, program::identifier);
    dbus_status_notifier_item_set_title(raw, program::name);
    dbus_status_notifier_item_set_status(raw, statusText(false));
    dbus_status_notifier_item_set_icon_pixmap(raw, noPictures());
    dbus_status_notifier_item_set_overlay_icon_pixmap(raw, noPictures());
    dbus_status_notifier_item_set_attention_icon_pixmap(raw, noPictures());
    dbus_status_notifier_item_set_tool_tip(raw, toolTip(""));
    for (const auto set :
         {dbus_status_notifier_item_set_icon_name, dbus_status_notifier_item_set_icon_theme_path,
          dbus_status_notifier_item_set_overlay_icon_name,
          dbus_status_notifier_item_set_attention_icon_name}) {
        set(raw, "");
    }
    return item;
}

} // namespace

// What the host calls. The reply goes first, since the host waits for it.
struct StatusNotifierItem::Methods {
    static gboolean contextMenu(DbusStatusNotifierItem *item, GDBusMethodInvocation *invocation,
                                int x, int y, gpointer self) {
        dbus_status_notifier_item_complete_context_menu(item, invocation);
        static_cast<StatusNotifierItem *>(self)->contextMenu_.emit(x, y);
        return TRUE;
    }

    static gboolean activate(DbusStatusNotifierItem * /*item*/, GDBusMethodInvocation *invocation,
                             int /*x*/, int /*y*/, gpointer /*self*/) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
        return TRUE;
    }

    static gboolean scroll(DbusStatusNotifierItem * /*item*/, GDBusMethodInvocation *invocation,
                           int /*delta*/, const char * /*orientation*/, gpointer /*self*/) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
        return TRUE;
    }
};

StatusNotifierItem::StatusNotifierItem(SessionBus &bus)
    : bus_(bus)
    , item_(makeItem()) {
    const auto handle = [this](const char *method, GCallback function) {
        methodCalls_.push_back(connectToSignal(item_.get(), method, function, this));
    };
    handle("handle-context-menu", G_CALLBACK(&Methods::contextMenu));
    handle("handle-activate", G_CALLBACK(&Methods::activate));
    handle("handle-secondary-activate", G_CALLBACK(&Methods::activate));
    handle("handle-scroll", G_CALLBACK(&Methods::scroll));
    busChanges_ = bus_.onChange([this] {
        disconnect();
        connect();
    });
    connect();
}

StatusNotifierItem::~StatusNotifierItem() = default;

Handle StatusNotifierItem::onHostChange(std::function<void()> observer) {
    return hostChanged_.subscribe(std::move(observer));
}

Handle StatusNotifierItem::onContextMenu(std::function<void(int x, int y)> observer) {
    return contextMenu_.subscribe(std::move(observer));
}

void StatusNotifierItem::setTitle(const StatusTitle &title) {
    if (title != title_) {
        title_ = title;
        dbus_status_notifier_item_set_icon_pixmap(item_.get(), pictures(title));
        dbus_status_notifier_item_emit_new_icon(item_.get());
    }
}

void StatusNotifierItem::setHidden(bool isHidden) {
    if (isHidden != std::exchange(isHidden_, isHidden)) {
        dbus_status_notifier_item_set_status(item_.get(), statusText(isHidden));
        dbus_status_notifier_item_emit_new_status(item_.get(), statusText(isHidden));
    }
}

void StatusNotifierItem::setToolTip(const std::string &text) {
    dbus_status_notifier_item_set_tool_tip(item_.get(), toolTip(text));
    dbus_status_notifier_item_emit_new_tool_tip(item_.get());
}

void StatusNotifierItem::connect() {
    auto *connection = bus_.connection();
    if (connection == nullptr) {
        return;
    }
    auto *skeleton = G_DBUS_INTERFACE_SKELETON(item_.get());
    if (g_dbus_interface_skeleton_export(skeleton, connection, itemPath, nullptr) != FALSE) {
        export_ = Handle([skeleton] { g_dbus_interface_skeleton_unexport(skeleton); });
    }
    const auto appeared =
        +[](GDBusConnection *, const char *, const char *uniqueName, gpointer self) {
            static_cast<StatusNotifierItem *>(self)->handleWatcher(uniqueName);
        };
    const auto vanished = +[](GDBusConnection *, const char *, gpointer self) {
        static_cast<StatusNotifierItem *>(self)->leaveWatcher();
    };
    const auto watch = g_bus_watch_name_on_connection(
        connection, watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE, appeared, vanished, this, nullptr);
    watcherWatch_ = Handle([watch] { g_bus_unwatch_name(watch); });
}

void StatusNotifierItem::disconnect() {
    watcherWatch_.reset();
    export_.reset();
    leaveWatcher();
}

// By its unique name, of which the proxy need not follow the owner.
void StatusNotifierItem::handleWatcher(const char *uniqueName) {
    leaveWatcher();
    calls_.start(
        [this](GObject *, GAsyncResult *result) {
            adoptWatcher(GlibPointer<DbusStatusNotifierWatcher>(
                dbus_status_notifier_watcher_proxy_new_finish(result, nullptr)));
        },
        dbus_status_notifier_watcher_proxy_new, bus_.connection(),
        static_cast<GDBusProxyFlags>(G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES |
                                     G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START),
        uniqueName, watcherPath);
    askForProcess(uniqueName);
}

void StatusNotifierItem::adoptWatcher(GlibPointer<DbusStatusNotifierWatcher> watcher) {
    if (!watcher) {
        return;
    }
    watcher_ = std::move(watcher);
    g_dbus_proxy_set_default_timeout(G_DBUS_PROXY(watcher_.get()), longestCall);
    const auto changed = +[](DbusStatusNotifierWatcher *, gpointer self) {
        static_cast<StatusNotifierItem *>(self)->askForHost();
    };
    hostsCome_ = connectToSignal(watcher_.get(), "status-notifier-host-registered",
                                 G_CALLBACK(changed), this);
    hostsGo_ = connectToSignal(watcher_.get(), "status-notifier-host-unregistered",
                               G_CALLBACK(changed), this);
    // By the connection's unique name: a well-known one could be taken already.
    calls_.start([](GObject *, GAsyncResult *) {},
                 dbus_status_notifier_watcher_call_register_status_notifier_item, watcher_.get(),
                 g_dbus_connection_get_unique_name(bus_.connection()));
    askForHost();
}

void StatusNotifierItem::leaveWatcher() {
    calls_.cancel();
    hostsCome_.reset();
    hostsGo_.reset();
    watcher_.reset();
    setHost(false, 0);
}

void StatusNotifierItem::askForProcess(const char *uniqueName) {
    calls_.start(
        [this](GObject *source, GAsyncResult *result) {
            const GlibPointer<GVariant> reply(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
            if (reply) {
                std::uint32_t process = 0;
                g_variant_get(reply.get(), "(u)", &process);
                setHost(hasHost_, static_cast<std::int32_t>(process));
            }
        },
        g_dbus_connection_call, bus_.connection(), busName, busPath, busName,
        "GetConnectionUnixProcessID", g_variant_new("(s)", uniqueName), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, longestCall);
}

// A watcher alone shows nothing. Watchers do not announce that this property changes, so the proxy
// keeps no copy of it.
void StatusNotifierItem::askForHost() {
    calls_.start(
        [this](GObject *source, GAsyncResult *result) {
            const GlibPointer<GVariant> reply(
                g_dbus_proxy_call_finish(G_DBUS_PROXY(source), result, nullptr));
            bool hasHost = false;
            if (reply && g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)")) != FALSE) {
                GVariant *raw = nullptr;
                g_variant_get(reply.get(), "(v)", &raw);
                const GlibPointer<GVariant> value(raw);
                hasHost = g_variant_is_of_type(raw, G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                          g_variant_get_boolean(raw) != FALSE;
            }
            setHost(hasHost, watcherProcess_);
        },
        g_dbus_proxy_call, G_DBUS_PROXY(watcher_.get()), "org.freedesktop.DBus.Properties.Get",
        g_variant_new("(ss)", watcherName, "IsStatusNotifierHostRegistered"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, longestCall);
}

void StatusNotifierItem::setHost(bool hasHost, std::int32_t watcherProcess) {
    const bool isNews = hasHost != hasHost_ || watcherProcess != watcherProcess_;
    hasHost_ = hasHost;
    watcherProcess_ = watcherProcess;
    if (isNews) {
        hostChanged_.emit();
    }
}

} // namespace lumo::freedesktop
