#pragma once

#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"

#include <functional>
#include <string>

namespace lumo::wayland::kwin {

// An interface of an object that another program has on the session bus.
struct BusObject {
    const char *service;
    std::string path;
    const char *interface;

    using Reply = std::function<void(GVariant *reply)>;

    // Begins the call. The arguments may be floating. Finishes with the reply, or with null when
    // the call has failed.
    void call(freedesktop::AsyncCalls &calls, GDBusConnection *connection, const char *method,
              GVariant *arguments, Reply finish) const;

    // The call without its reply, whatever becomes of this program.
    void tell(GDBusConnection *connection, const char *method, GVariant *arguments) const;
};

} // namespace lumo::wayland::kwin
