#pragma once

#include <sys/types.h>
#include <xcb/record.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <string>

namespace lumo::desktop {

// Counts, in the X server itself, the requests that every connection of one process makes from now
// on.
class RequestCounter {
  public:
    // Throws when the process has no connection to the display or the server cannot record.
    RequestCounter(const std::string &displayName, pid_t process);
    ~RequestCounter();
    RequestCounter(const RequestCounter &) = delete;
    RequestCounter &operator=(const RequestCounter &) = delete;

    // Everything that the server has executed by now.
    int count();

    // Those with that major request code.
    int countOf(int code);

    // The same by major request code, for a failure's message.
    std::string describe();

  private:
    void readRecorded();
    void countRequests(const std::uint8_t *bytes, std::size_t size);

    xcb_connection_t *control_;
    xcb_connection_t *data_;
    xcb_record_context_t context_ = XCB_NONE;
    unsigned enabled_ = 0; // the sequence number of the request whose replies are the record
    std::map<int, int> countByCode_;
};

} // namespace lumo::desktop
