#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lumo {

// Where diagnostic lines go. The lines carry their own "[Lumo] " prefix and no line end. Main
// thread only.
class Log {
  public:
    using Sink = std::function<void(std::string_view line)>;

    explicit Log(Sink sink);

    // Titles and names of other programs may be part of a line: it reaches the sink as printable().
    void print(std::string_view line) const;

  private:
    Sink sink_;
};

// The text, UTF-8, with every control character written as an escape sequence: it stays on its
// line and sends nothing to a terminal.
std::string printable(std::string_view text);

} // namespace lumo
