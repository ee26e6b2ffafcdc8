#include "platform/freedesktop/RunningInstance.h"

#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/BusNames.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <optional>

namespace lumo::freedesktop {

namespace {

constexpr int longestWait = 2000; // milliseconds

// Turns the main context until the condition holds, or the time is up.
bool turnUntil(const std::function<bool()> &condition) {
    auto isOver = false;
    auto *source = g_timeout_source_new(longestWait);
    g_source_set_callback(
        source,
        [](gpointer over) -> gboolean {
            *static_cast<bool *>(over) = true;
            return G_SOURCE_REMOVE;
        },
        &isOver, nullptr);
    g_source_attach(source, nullptr);
    while (!condition() && !isOver) {
        g_main_context_iteration(nullptr, TRUE);
    }
    g_source_destroy(source);
    g_source_unref(source);
    return condition();
}

// What the bus, or the program with that name on it, answers; null when there is no answer.
GlibPointer<GVariant> answerTo(const SessionBus &bus, const std::string &name,
                               const std::string &path, const char *interface, const char *method,
                               GVariant *arguments) {
    GlibPointer<GVariant> answer;
    bool hasEnded = false;
    AsyncCalls calls;
    calls.start(
        [&](GObject *source, GAsyncResult *result) {
            answer.reset(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
            hasEnded = true;
        },
        g_dbus_connection_call, bus.connection(), name.c_str(), path.c_str(), interface, method,
        arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, longestWait);
    turnUntil([&] { return hasEnded; });
    return answer;
}

} // namespace

bool giveWayToRunningInstance(SessionBus &bus, const std::string &display) {
    constexpr std::uint32_t doNotQueue = 4;
    constexpr std::uint32_t exists = 3;
    if (sessionBusAddress().empty() || !turnUntil([&] { return bus.connection() != nullptr; })) {
        return false;
    }
    const auto name = std::string(program::identifier) + '.' + display;
    const auto claim = answerTo(bus, busName, busPath, busName, "RequestName",
                                g_variant_new("(su)", name.c_str(), doNotQueue));
    std::uint32_t outcome = 0;
    if (claim) {
        g_variant_get(claim.get(), "(u)", &outcome);
    }
    if (outcome != exists || bus.connection() == nullptr) {
        return false;
    }
    answerTo(bus, name, objectPathOf(name), "org.freedesktop.Application", "Activate",
             g_variant_new("(a{sv})", nullptr));
    return true;
}

} // namespace lumo::freedesktop
