#pragma once

#include <functional>
#include <string_view>

namespace lumo {

// Where diagnostic lines go. The lines carry their own "[Lumo] " prefix and no line end. Main
// thread only.
class Log {
  public:
    using Sink = std::function<void(std::string_view line)>;

    explicit Log(Sink sink);

    // A log that writes each line to standard output at once.
    static Log standardOutput();

    void print(std::string_view line) const { sink_(line); }

  private:
    Sink sink_;
};

} // namespace lumo
