#include "platform/freedesktop/SessionBusControl.h"

#include "platform/freedesktop/BusNames.h"
#include "platform/freedesktop/GlibSignal.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <org.freedesktop.Application.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

struct NamedAction {
    std::string_view name;
    RemoteAction action;
};

constexpr auto namedActions = std::to_array<NamedAction>({
    {"toggle", RemoteAction::toggle},
    {"on", RemoteAction::turnOn},
    {"off", RemoteAction::turnOff},
    {"peek", RemoteAction::peek},
    {"set-cover", RemoteAction::setCover},
    {"emergency-stop", RemoteAction::emergencyStop},
    {"settings", RemoteAction::openSettings},
    {"quit", RemoteAction::quit},
});

// The parameters are an array of none or one, of any type.
std::optional<RemoteRequest> requestFor(std::string_view name, GVariant *parameters) {
    const auto *named = std::ranges::find(namedActions, name, &NamedAction::name);
    const auto count = g_variant_n_children(parameters);
    if (named == namedActions.end()) {
        return std::nullopt;
    }
    RemoteRequest request;
    request.action = named->action;
    if (count == 1 && request.action == RemoteAction::setCover) {
        const GlibPointer<GVariant> boxed(g_variant_get_child_value(parameters, 0));
        const GlibPointer<GVariant> value(g_variant_get_variant(boxed.get()));
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) == FALSE) {
            return std::nullopt;
        }
        request.application = g_variant_get_string(value.get(), nullptr);
    } else if (count > 0) {
        return std::nullopt;
    }
    return request;
}

} // namespace

struct SessionBusControl::Methods {
    static void answer(GDBusMethodInvocation *invocation,
                       const std::optional<std::string> &refusal) {
        if (refusal) {
            g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR,
                                                          G_DBUS_ERROR_FAILED, refusal->c_str());
        } else {
            g_dbus_method_invocation_return_value(invocation, nullptr);
        }
    }

    static gboolean activate(DbusApplication * /*object*/, GDBusMethodInvocation *invocation,
                             GVariant * /*platformData*/, gpointer self) {
        answer(invocation, static_cast<SessionBusControl *>(self)->perform({}));
        return TRUE;
    }

    // There is nothing that the program could open.
    static gboolean open(DbusApplication *object, GDBusMethodInvocation *invocation,
                         const char *const * /*uris*/, GVariant *platformData, gpointer self) {
        return activate(object, invocation, platformData, self);
    }

    static gboolean activateAction(DbusApplication * /*object*/, GDBusMethodInvocation *invocation,
                                   const char *name, GVariant *parameters,
                                   GVariant * /*platformData*/, gpointer self) {
        auto &control = *static_cast<SessionBusControl *>(self);
        const auto request = requestFor(name, parameters);
        if (!request) {
            g_dbus_method_invocation_return_error(
                invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                "%s is no action, or takes no such parameter", name);
        } else if (request->action == RemoteAction::quit) {
            answer(invocation, std::nullopt);
            control.performAfterReply(*request);
        } else {
            answer(invocation, control.perform(*request));
        }
        return TRUE;
    }
};

SessionBusControl::SessionBusControl(SessionBus &bus, const std::string &display,
                                     StartedBy startedBy)
    : bus_(bus)
    , awaitsFirstRequest_(startedBy == StartedBy::request) {
    const std::string name = program::identifier;
    offers_.push_back(makeOffer(name + "." + display));
    offers_.push_back(makeOffer(name));
    busChanges_ = bus_.onChange([this] { connect(); });
    connect();
}

SessionBusControl::~SessionBusControl() = default;

Handle SessionBusControl::onRequest(Perform perform) {
    perform_ = std::move(perform);
    return Handle([this] { perform_ = nullptr; });
}

SessionBusControl::Offer SessionBusControl::makeOffer(const std::string &name) {
    Offer offer{name, GlibPointer<DbusApplication>(dbus_application_skeleton_new()), {}, {}};
    const auto handle = [&](const char *method, GCallback function) {
        offer.methodCalls.push_back(connectToSignal(offer.object.get(), method, function, this));
    };
    handle("handle-activate", G_CALLBACK(&Methods::activate));
    handle("handle-open", G_CALLBACK(&Methods::open));
    handle("handle-activate-action", G_CALLBACK(&Methods::activateAction));
    return offer;
}

// The objects come first, so that no request that a name brings is without one.
void SessionBusControl::connect() {
    calls_.cancel();
    for (auto &offer : offers_) {
        offer.exported.reset();
    }
    auto *connection = bus_.connection();
    if (connection == nullptr) {
        return;
    }
    for (auto &offer : offers_) {
        auto *skeleton = G_DBUS_INTERFACE_SKELETON(offer.object.get());
        if (g_dbus_interface_skeleton_export(skeleton, connection, objectPathOf(offer.name).c_str(),
                                             nullptr) != FALSE) {
            offer.exported = Handle([skeleton] { g_dbus_interface_skeleton_unexport(skeleton); });
        }
    }
    for (const auto &offer : offers_) {
        requestName(offer.name);
    }
    // A bus delivers what has waited for a name as soon as it is owned, so before this reply.
    calls_.start([this](GObject *, GAsyncResult *) { awaitsFirstRequest_ = false; },
                 g_dbus_connection_call, connection, busName, busPath, "org.freedesktop.DBus.Peer",
                 "Ping", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, longestCall);
}

// The bus keeps who asks for a name that is taken, and gives it away when its owner goes.
void SessionBusControl::requestName(const std::string &name) {
    constexpr std::uint32_t noFlags = 0;
    calls_.start([](GObject *, GAsyncResult *) {}, g_dbus_connection_call, bus_.connection(),
                 busName, busPath, busName, "RequestName",
                 g_variant_new("(su)", name.c_str(), noFlags), G_VARIANT_TYPE("(u)"),
                 G_DBUS_CALL_FLAGS_NONE, longestCall);
}

std::optional<std::string> SessionBusControl::perform(RemoteRequest request) {
    request.hasStartedProgram = std::exchange(awaitsFirstRequest_, false);
    return perform_ ? perform_(request) : std::optional<std::string>("Lumo is about to end");
}

void SessionBusControl::performAfterReply(const RemoteRequest &request) {
    calls_.start([this, request](GObject *, GAsyncResult *) { perform(request); },
                 g_dbus_connection_flush, bus_.connection());
}

} // namespace lumo::freedesktop
