#pragma once

#include "support/Log.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumo::posix {

// Writes lines to a file, a terminal, a pipe or a socket without ever waiting for who reads it. A
// line that does not fit is dropped; the next one that fits comes after one that says how many
// were. Main thread only.
class LineOutput {
  public:
    // The descriptor stays the caller's. A pipe whose reading end is closed raises SIGPIPE, which
    // the program is to ignore.
    explicit LineOutput(int fileDescriptor)
        : fileDescriptor_(fileDescriptor) {}

    // The line comes without its end.
    void print(std::string_view line);

  private:
    void write();

    int fileDescriptor_;
    std::string unwritten_; // the rest of a line of which something has been written
    std::size_t dropped_ = 0;
};

// The log that writes to standard output.
Log standardOutputLog(Log::Detail detail = Log::Detail::withDiagnostics);

} // namespace lumo::posix
