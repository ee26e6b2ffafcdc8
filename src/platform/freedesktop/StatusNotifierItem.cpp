#include "platform/freedesktop/StatusNotifierItem.h"

#include "platform/freedesktop/DotPicture.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char *watcherPath = "/StatusNotifierWatcher";
constexpr const char *itemInterface = "org.kde.StatusNotifierItem";
constexpr const char *itemPath = "/StatusNotifierItem";
constexpr int longestCall = 10000; // milliseconds

// The sides of the pictures that are offered, in pixels; hosts take the one that fits best.
constexpr std::array pictureSides{16, 22, 24, 32, 44, 48};

constexpr const char *introspection = R"xml(<node>
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <method name="ContextMenu">
      <arg name="x" type="i" direction="in"/>
      <arg name="y" type="i" direction="in"/>
    </method>
    <method name="Activate">
      <arg name="x" type="i" direction="in"/>
      <arg name="y" type="i" direction="in"/>
    </method>
    <method name="SecondaryActivate">
      <arg name="x" type="i" direction="in"/>
      <arg name="y" type="i" direction="in"/>
    </method>
    <method name="Scroll">
      <arg name="delta" type="i" direction="in"/>
      <arg name="orientation" type="s" direction="in"/>
    </method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus"><arg name="status" type="s"/></signal>
  </interface>
</node>)xml";

GVariant *noPictures() {
    return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
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
        g_variant_builder_add(
            &list, "(ii@ay)", side, side,
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, argb.data(), argb.size(), 1));
    }
    return g_variant_builder_end(&list);
}

const char *statusText(bool isHidden) {
    return isHidden ? "Passive" : "Active";
}

GDBusInterfaceInfo *interfaceInfo() {
    static const GlibPointer<GDBusNodeInfo> node(
        g_dbus_node_info_new_for_xml(introspection, nullptr));
    return g_dbus_node_info_lookup_interface(node.get(), itemInterface);
}

} // namespace

struct StatusNotifierItem::Vtable {
    static void call(GDBusConnection * /*connection*/, const char * /*sender*/,
                     const char * /*path*/, const char * /*interface*/, const char *method,
                     GVariant *arguments, GDBusMethodInvocation *invocation, gpointer self) {
        // Answered first, since the host waits.
        const bool isContextMenu = std::string_view(method) == "ContextMenu";
        int x = 0;
        int y = 0;
        if (isContextMenu) {
            g_variant_get(arguments, "(ii)", &x, &y);
        }
        g_dbus_method_invocation_return_value(invocation, nullptr);
        if (isContextMenu) {
            static_cast<StatusNotifierItem *>(self)->contextMenu_.emit(x, y);
        }
    }

    static GVariant *get(GDBusConnection * /*connection*/, const char * /*sender*/,
                         const char * /*path*/, const char * /*interface*/, const char *property,
                         GError ** /*error*/, gpointer self) {
        return static_cast<const StatusNotifierItem *>(self)->property(property);
    }

    static constexpr GDBusInterfaceVTable table{call, get, nullptr, {}};
};

StatusNotifierItem::StatusNotifierItem(SessionBus &bus)
    : bus_(bus)
    , busChanges_(bus.onChange([this] {
        disconnect();
        connect();
    })) {
    connect();
}

StatusNotifierItem::~StatusNotifierItem() {
    disconnect();
}

Handle StatusNotifierItem::onHostChange(std::function<void()> observer) {
    return hostChanged_.subscribe(std::move(observer));
}

Handle StatusNotifierItem::onContextMenu(std::function<void(int x, int y)> observer) {
    return contextMenu_.subscribe(std::move(observer));
}

void StatusNotifierItem::setTitle(const StatusTitle &title) {
    if (title != title_) {
        title_ = title;
        emit("NewIcon");
    }
}

void StatusNotifierItem::setHidden(bool isHidden) {
    if (isHidden != std::exchange(isHidden_, isHidden)) {
        emit("NewStatus", g_variant_new("(s)", statusText(isHidden)));
    }
}

void StatusNotifierItem::setToolTip(const std::string &text) {
    toolTip_ = text;
    emit("NewToolTip");
}

void StatusNotifierItem::connect() {
    connection_ = bus_.connection();
    if (connection_ == nullptr) {
        return;
    }
    g_object_ref(connection_);
    cancellation_ = std::make_unique<Cancellation>();
    exported_ = g_dbus_connection_register_object(connection_, itemPath, interfaceInfo(),
                                                  &Vtable::table, this, nullptr, nullptr);
    const auto appeared = +[](GDBusConnection *, const char *, const char *, gpointer self) {
        static_cast<StatusNotifierItem *>(self)->watcherAppeared();
    };
    const auto vanished = +[](GDBusConnection *, const char *, gpointer self) {
        static_cast<StatusNotifierItem *>(self)->setHost(false, 0);
    };
    watch_ = g_bus_watch_name_on_connection(connection_, watcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            appeared, vanished, this, nullptr);
    const auto hostsChanged =
        +[](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *,
            gpointer self) { static_cast<StatusNotifierItem *>(self)->askForHost(); };
    hostSignals_ = g_dbus_connection_signal_subscribe(
        connection_, watcherName, watcherName, nullptr, watcherPath, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, hostsChanged, this, nullptr);
}

void StatusNotifierItem::disconnect() {
    auto *connection = std::exchange(connection_, nullptr);
    if (connection == nullptr) {
        return;
    }
    cancellation_.reset();
    g_bus_unwatch_name(watch_);
    g_dbus_connection_signal_unsubscribe(connection, hostSignals_);
    g_dbus_connection_unregister_object(connection, exported_);
    g_object_unref(connection);
    setHost(false, 0);
}

void StatusNotifierItem::watcherAppeared() {
    // By the connection's own name: a well-known one would be one more thing that can be taken.
    g_dbus_connection_call(
        connection_, watcherName, watcherPath, watcherName, "RegisterStatusNotifierItem",
        g_variant_new("(s)", g_dbus_connection_get_unique_name(connection_)), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, longestCall, cancellation_->get(), nullptr, nullptr);
    askForProcess();
    askForHost();
}

void StatusNotifierItem::askForProcess() {
    const auto answered = +[](GObject *source, GAsyncResult *result, gpointer self) {
        GError *raw = nullptr;
        const GlibPointer<GVariant> reply(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &raw));
        const GlibPointer<GError> error(raw);
        if (reply) {
            std::uint32_t process = 0;
            g_variant_get(reply.get(), "(u)", &process);
            auto &item = *static_cast<StatusNotifierItem *>(self);
            item.setHost(item.hasHost_, static_cast<std::int32_t>(process));
        }
    };
    g_dbus_connection_call(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", watcherName), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, longestCall, cancellation_->get(), answered, this);
}

// A watcher alone shows nothing.
void StatusNotifierItem::askForHost() {
    const auto answered = +[](GObject *source, GAsyncResult *result, gpointer self) {
        GError *raw = nullptr;
        const GlibPointer<GVariant> reply(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &raw));
        const GlibPointer<GError> error(raw);
        // Whoever cancelled may be gone.
        if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
            return;
        }
        bool hasHost = false;
        if (reply) {
            const GlibPointer<GVariant> boxed(g_variant_get_child_value(reply.get(), 0));
            const GlibPointer<GVariant> value(g_variant_get_variant(boxed.get()));
            hasHost = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) != FALSE &&
                      g_variant_get_boolean(value.get()) != FALSE;
        }
        auto &item = *static_cast<StatusNotifierItem *>(self);
        item.setHost(hasHost, item.watcherProcess_);
    };
    g_dbus_connection_call(
        connection_, watcherName, watcherPath, "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", watcherName, "IsStatusNotifierHostRegistered"), G_VARIANT_TYPE("(v)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, longestCall, cancellation_->get(), answered, this);
}

void StatusNotifierItem::setHost(bool hasHost, std::int32_t watcherProcess) {
    const bool isNews = hasHost != hasHost_ || watcherProcess != watcherProcess_;
    hasHost_ = hasHost;
    watcherProcess_ = watcherProcess;
    if (isNews) {
        hostChanged_.emit();
    }
}

GVariant *StatusNotifierItem::property(const std::string &name) const {
    if (name == "Category") {
        return g_variant_new_string("ApplicationStatus");
    }
    if (name == "Id") {
        return g_variant_new_string(program::identifier);
    }
    if (name == "Title") {
        return g_variant_new_string(program::name);
    }
    if (name == "Status") {
        return g_variant_new_string(statusText(isHidden_));
    }
    if (name == "WindowId") {
        return g_variant_new_int32(0);
    }
    if (name == "IconPixmap") {
        return pictures(title_);
    }
    if (name == "OverlayIconPixmap" || name == "AttentionIconPixmap") {
        return noPictures();
    }
    if (name == "ToolTip") {
        return g_variant_new("(s@a(iiay)ss)", "", noPictures(), toolTip_.c_str(), "");
    }
    if (name == "ItemIsMenu") {
        return g_variant_new_boolean(FALSE);
    }
    return g_variant_new_string("");
}

void StatusNotifierItem::emit(const char *signal, GVariant *arguments) {
    if (connection_ != nullptr) {
        g_dbus_connection_emit_signal(connection_, nullptr, itemPath, itemInterface, signal,
                                      arguments, nullptr);
    } else if (arguments != nullptr) {
        g_variant_unref(g_variant_ref_sink(arguments));
    }
}

} // namespace lumo::freedesktop
