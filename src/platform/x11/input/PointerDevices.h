#pragma once

#include "platform/x11/server/PendingReads.h"

#include <xcb/xinput.h>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumo::x11 {

class Connection;

// One axis of a pointing device: a mouse reports how far it was moved, a tablet or a touch screen
// where it is.
struct PointerAxis {
    bool isAbsolute = false;
    double minimum = 0; // of an absolute axis, in the device's units; the same twice: unknown
    double maximum = 0;
    std::optional<double> last = {}; // where it was, if it is absolute

    // How many pixels the value moves the pointer along a screen that many pixels long.
    double movement(double value, double screenLength);
};

// A movement of the pointer in pixels, positive to the right and downwards.
struct PointerMovement {
    double x = 0;
    double y = 0;
};

// What the axes of the pointing devices mean, kept current by events. Reads without waiting; the
// movements of a device that is not known yet count as none. Main thread only.
class PointerDevices {
  public:
    // The server must have the input extension.
    explicit PointerDevices(Connection &connection);

    // Reads the devices anew.
    void read();

    // Takes note of a raw motion event. Allocates nothing and asks nothing.
    PointerMovement movement(const xcb_input_raw_motion_event_t &event);

  private:
    using Axes = std::array<PointerAxis, 2>;

    void request();
    void apply(const xcb_input_xi_query_device_reply_t *reply);

    Connection &connection_;
    PendingReads reads_;
    ReplyQueue replies_;
    std::vector<std::optional<Axes>> axes_; // by device
};

} // namespace lumo::x11
