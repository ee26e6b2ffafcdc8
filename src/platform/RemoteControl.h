#pragma once

#include "support/Handle.h"

#include <functional>
#include <optional>
#include <string>

namespace lumo {

// What other programs can have this one do, a script or a panel's launcher for instance. To
// activate it is what starting it once more does.
enum class RemoteAction {
    activate,
    toggle,
    turnOn,
    turnOff,
    peek,
    setCover,
    emergencyStop,
    openSettings,
    quit,
};

struct RemoteRequest {
    RemoteAction action = RemoteAction::activate;

    // Of setCover only: the identifier of the application that is to be the Cover App, empty for
    // none. Absent: the one that the user works in.
    std::optional<std::string> application;

    // The program was not running and has been started for this request.
    bool hasStartedProgram = false;

    bool operator==(const RemoteRequest &) const = default;
};

// The requests of other programs of the user's. Main thread only.
class RemoteControl {
  public:
    virtual ~RemoteControl() = default;

    // Has the function do what is requested until the handle is released, in place of one that was
    // there before. It returns why that was not possible, for the program that made the request;
    // absent when it was done.
    using Perform = std::function<std::optional<std::string>(const RemoteRequest &)>;
    virtual Handle onRequest(Perform perform) = 0;
};

} // namespace lumo
