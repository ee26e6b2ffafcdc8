#include "platform/wayland/kwin/KWinScript.h"

#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/wayland/kwin/BusObject.h"

#include <gio/gio.h>
#include <unistd.h>

#include <fstream>
#include <utility>

namespace lumo::wayland::kwin {

namespace {

constexpr const char *service = "org.kde.KWin";
constexpr const char *scriptInterface = "org.kde.kwin.Script";
constexpr const char *ownInterface = "app.lumo.Lumo.Script";

const BusObject scripting = {service, "/Scripting", "org.kde.kwin.Scripting"};

GDBusInterfaceInfo *interfaceInfo() {
    static const freedesktop::GlibPointer<GDBusNodeInfo> node(
        g_dbus_node_info_new_for_xml("<node><interface name='app.lumo.Lumo.Script'>"
                                     "<method name='Tell'><arg type='s' direction='in'/></method>"
                                     "</interface></node>",
                                     nullptr));
    return node->interfaces[0];
}

} // namespace

struct KWinScript::Methods {
    static void call(GDBusConnection *, const char *, const char *, const char *, const char *,
                     GVariant *arguments, GDBusMethodInvocation *invocation, gpointer self) {
        const char *message = nullptr;
        g_variant_get(arguments, "(&s)", &message);
        const std::string text = message;
        g_dbus_method_invocation_return_value(invocation, nullptr);
        const auto receive = static_cast<KWinScript *>(self)->receive_; // may destroy the object
        receive(text);
    }
};

KWinScript::KWinScript(freedesktop::SessionBus &bus, std::string name, std::string code,
                       std::function<void(const std::string &)> receive)
    : bus_(bus)
    , name_(std::move(name))
    , code_(std::move(code))
    , receive_(std::move(receive))
    , busChanges_(bus.onChange([this] { load(); })) {
    load();
}

KWinScript::~KWinScript() {
    std::error_code error;
    std::filesystem::remove(file_, error);
    if (auto *connection = bus_.connection()) {
        scripting.tell(connection, "unloadScript", g_variant_new("(s)", plugin().c_str()));
        g_dbus_connection_flush_sync(connection, nullptr, nullptr);
    }
}

std::string KWinScript::plugin() const {
    return std::string(freedesktop::program::identifier) + '.' + name_;
}

std::string KWinScript::path() const {
    return "/app/lumo/Lumo/" + name_;
}

// One of the same name is left over from a run that was killed, or from before the bus was lost.
void KWinScript::load() {
    calls_.cancel();
    export_.reset();
    auto *connection = bus_.connection();
    const char *folder = g_get_user_runtime_dir();
    if (connection == nullptr || folder == nullptr) {
        return;
    }
    static constexpr GDBusInterfaceVTable methods = {&Methods::call, nullptr, nullptr, {}};
    const auto registration = g_dbus_connection_register_object(
        connection, path().c_str(), interfaceInfo(), &methods, this, nullptr, nullptr);
    export_ = Handle([connection, registration] {
        g_dbus_connection_unregister_object(connection, registration);
    });
    file_ =
        std::filesystem::path(folder) / ("lumo-" + std::to_string(getpid()) + '-' + name_ + ".js");
    std::ofstream(file_) << "function tell(text) { callDBus(\""
                         << g_dbus_connection_get_unique_name(connection) << "\", \"" << path()
                         << "\", \"" << ownInterface << "\", \"Tell\", text); }\n"
                         << code_;
    scripting.tell(connection, "unloadScript", g_variant_new("(s)", plugin().c_str()));
    scripting.call(calls_, connection, "loadScript",
                   g_variant_new("(ss)", file_.c_str(), plugin().c_str()), [this](GVariant *reply) {
                       if (reply != nullptr && g_variant_is_of_type(reply, G_VARIANT_TYPE("(i)"))) {
                           int number = -1;
                           g_variant_get(reply, "(i)", &number);
                           run(number);
                       }
                   });
}

// KWin has the script's object at the one path or, from version 6 on, at the other. It has read the
// file when it answers.
void KWinScript::run(int number) {
    for (const auto *prefix : {"/", "/Scripting/Script"}) {
        const BusObject script = {service, prefix + std::to_string(number), scriptInterface};
        script.call(calls_, bus_.connection(), "run", nullptr, [this](GVariant *reply) {
            if (reply != nullptr) {
                std::error_code error;
                std::filesystem::remove(file_, error);
            }
        });
    }
}

} // namespace lumo::wayland::kwin
