#pragma once

#include "support/Handle.h"

#include <xcb/xinput.h>

#include <cstdint>
#include <functional>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::x11 {

class Connection;

// Reads the raw motion of the pointing devices at most sixty times a second, however often they
// report: on a connection of its own, which is left alone between two readings while all other
// events go on. Main thread only.
class MotionReader {
  public:
    // Calls the function for each event of a reading, and the other one after the last. Connects
    // to the display of the connection and waits for that, nothing after it waits. All arguments
    // outlive the reader.
    MotionReader(freedesktop::GlibMainLoop &loop, const Connection &connection,
                 std::function<void(const xcb_input_raw_motion_event_t &)> handle,
                 std::function<void()> finish);
    ~MotionReader();
    MotionReader(const MotionReader &) = delete;
    MotionReader &operator=(const MotionReader &) = delete;

    // Has the server send motion or none. Nothing is read on a display that lets no more clients
    // in.
    void setEnabled(bool isEnabled);

    // Reads what has come since the last reading; true when there was any.
    bool readNow();

  private:
    void awaitMotion();
    void readRegularly();

    freedesktop::GlibMainLoop &loop_;
    xcb_connection_t *connection_;
    xcb_window_t root_;
    std::uint8_t extension_;
    std::function<void(const xcb_input_raw_motion_event_t &)> handle_;
    std::function<void()> finish_;
    Handle waiting_; // for motion, or for the time of the next reading
};

} // namespace lumo::x11
