#pragma once

#include "platform/MainLoop.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <functional>
#include <memory>
#include <string>

using GDBusConnection = struct _GDBusConnection; // NOLINT(bugprone-reserved-identifier,cert-*)

namespace lumo::freedesktop {

class Cancellation;

// Where the user's session bus is; empty when there is none. Nothing is started to get one.
std::string sessionBusAddress();

// A lasting connection to the session bus: looked for again, ever less often, while there is none
// or after it was lost. Main thread only; never waits.
class SessionBus {
  public:
    explicit SessionBus(MainLoop &mainLoop);
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    // Null while there is none.
    GDBusConnection *connection() const { return connection_; }

    // Calls the observer after a connection came or went.
    Handle onChange(std::function<void()> observer);

  private:
    void connect();
    void adopt(GDBusConnection *connection);
    void drop();
    void tryAgainLater();

    MainLoop &mainLoop_;
    std::unique_ptr<Cancellation> cancellation_;
    GDBusConnection *connection_ = nullptr;
    unsigned long closedSignal_ = 0;
    double pause_; // seconds until the next attempt
    Handle nextAttempt_;
    Signal<> changed_;
    Lifetime lifetime_;
};

} // namespace lumo::freedesktop
