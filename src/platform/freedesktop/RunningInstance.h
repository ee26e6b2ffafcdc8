#pragma once

#include <string>

namespace lumo::freedesktop {

class SessionBus;

// Gives way to a program of the same kind on that display, by the name that SessionBusControl has
// for it there: claims the name, and where another process has it, tells that one that the user has
// started the program once more. True then. False as well where there is no session bus. Waits, at
// most a few seconds: for start-up only.
bool giveWayToRunningInstance(SessionBus &bus, const std::string &display);

} // namespace lumo::freedesktop
