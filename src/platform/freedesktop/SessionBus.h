#pragma once

#include "platform/MainLoop.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <string>

namespace lumo::freedesktop {

// Where the user's session bus is; empty when there is none. Nothing is started to get one.
std::string sessionBusAddress();

// Begins to connect to the message bus at the address. Finishes with a connection, or with none and
// the error.
void connectToBus(AsyncCalls &calls, const std::string &address,
                  std::function<void(GlibPointer<GDBusConnection>, GlibPointer<GError>)> finish);

// A lasting connection to the session bus: looked for again, ever less often, while there is none
// or after it was lost. Main thread only; never waits.
class SessionBus {
  public:
    // The main loop outlives the bus.
    explicit SessionBus(MainLoop &mainLoop);
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    // Null while there is none.
    GDBusConnection *connection() const { return connection_.get(); }

    // Calls the observer after a connection came or went.
    Handle onChange(std::function<void()> observer);

  private:
    void connect();
    void adopt(GlibPointer<GDBusConnection> connection);
    void drop();
    void tryAgainLater();

    MainLoop &mainLoop_;
    GlibPointer<GDBusConnection> connection_;
    double pause_; // seconds until the next attempt
    Handle sharedConnections_;
    Signal<> changed_;
    Handle closed_;
    Handle nextAttempt_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
