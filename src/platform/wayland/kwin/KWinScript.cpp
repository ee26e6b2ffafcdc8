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

constexpr const char *ownInterface = "app.lumo.Lumo.Script";

// NOLINTNEXTLINE(cert-err58-cpp): without memory for that, nothing starts
const BusObject scripting = {"org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting"};

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

void KWinScript::load() {
    calls_.cancel();
    export_.reset();
    attempts_ = 0;
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
    replaceOlder();
}

// One of the same name is left over from a run that was killed, or from before the bus was lost, or
// has just been unloaded: KWin takes no other one before it is gone, which is a moment after its
// reply.
void KWinScript::replaceOlder() {
    constexpr int mostAttempts = 10;
    if (attempts_++ == mostAttempts) {
        return;
    }
    scripting.call(calls_, bus_.connection(), "unloadScript",
                   g_variant_new("(s)", plugin().c_str()), [this](GVariant * /*reply*/) {
                       scripting.call(calls_, bus_.connection(), "loadScript",
                                      g_variant_new("(ss)", file_.c_str(), plugin().c_str()),
                                      [this](GVariant *reply) { handleLoaded(reply); });
                   });
}

// KWin numbers a script by how many there are, so that another one may have its number, and its
// place on the bus, already: what is loaded is run by the call that runs all that do not run yet.
void KWinScript::handleLoaded(GVariant *reply) {
    if (reply == nullptr || g_variant_is_of_type(reply, G_VARIANT_TYPE("(i)")) == FALSE) {
        return;
    }
    int number = -1;
    g_variant_get(reply, "(i)", &number);
    if (number < 0) {
        replaceOlder();
    } else {
        scripting.tell(bus_.connection(), "start", nullptr);
    }
}

} // namespace lumo::wayland::kwin
