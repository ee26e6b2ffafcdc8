#pragma once

#include <xcb/xcb.h>

#include <optional>

namespace lumo::x11 {

class Connection;

// This program's claim on the display: the ownership of a selection, which the server takes back
// when the program ends in whatever way. Main thread only.
class SingleInstance {
  public:
    // Claims the display; absent when another instance has it. Waits for the server.
    static std::optional<SingleInstance> claim(Connection &connection);

    ~SingleInstance();
    SingleInstance(SingleInstance &&other) noexcept;
    SingleInstance &operator=(SingleInstance &&) = delete;

  private:
    SingleInstance(Connection &connection, xcb_window_t owner);

    Connection &connection_;
    xcb_window_t owner_; // 0 once moved from
};

} // namespace lumo::x11
