#pragma once

#include "platform/Application.h"
#include "platform/RemoteControl.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"

#include <string>
#include <vector>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*): as it is generated
using DbusApplication = struct _DbusApplication;

namespace lumo::freedesktop {

class SessionBus;

// Offers org.freedesktop.Application on the session bus, by two names: program::identifier, which
// the program that asked for it first has until it ends, and that name with the display's after it.
// An object is at the path that belongs to each name. Main thread only; never waits.
class SessionBusControl final : public RemoteControl {
  public:
    // The bus outlives this object. The display's name has letters, digits and underscores alone
    // and begins with a letter. The first request to a program that the bus has started counts as
    // what it was started for, if it has been there before the name was.
    SessionBusControl(SessionBus &bus, const std::string &display, StartedBy startedBy);
    ~SessionBusControl() override;
    SessionBusControl(const SessionBusControl &) = delete;
    SessionBusControl &operator=(const SessionBusControl &) = delete;

    Handle onRequest(Perform perform) override;

  private:
    struct Methods;
    struct Offer {
        std::string name;
        GlibPointer<DbusApplication> object;
        std::vector<Handle> methodCalls;
        Handle exported;
    };

    Offer makeOffer(const std::string &name);
    void connect();
    void requestName(const std::string &name);
    std::optional<std::string> perform(RemoteRequest request);
    void performAfterReply(const RemoteRequest &request);

    SessionBus &bus_;
    std::vector<Offer> offers_;
    Perform perform_;
    bool awaitsFirstRequest_;
    Handle busChanges_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
