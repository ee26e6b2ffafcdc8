#pragma once

#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <functional>
#include <memory>

namespace lumo::x11 {

class Connection;

// This program's claim on the display: the ownership of a selection, which the server takes back
// when the program ends in whatever way. Main thread only.
class SingleInstance {
  public:
    // Claims the display. Null when another instance has it; that one is then told that the user
    // wants it. Waits for the server.
    static std::unique_ptr<SingleInstance> claim(Connection &connection);

    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    // Calls the observer when another instance was started and gave way to this one.
    Handle onReopenRequest(std::function<void()> observer);

  private:
    SingleInstance(Connection &connection, OwnedWindow owner);

    OwnedWindow owner_; // of the selection
    xcb_atom_t reopenRequest_;
    Signal<> reopened_;
    Handle events_;
};

} // namespace lumo::x11
