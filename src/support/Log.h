#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lumo {

// Where the program's lines go: what a user should know, and the diagnostics of what it is doing
// all the time. The lines carry their own "[Lumo] " prefix and no line end. Main thread only.
class Log {
  public:
    using Sink = std::function<void(std::string_view line)>;
    enum class Detail { withDiagnostics, withoutDiagnostics };

    explicit Log(Sink sink, Detail detail = Detail::withDiagnostics);

    // Titles and names of other programs may be part of a line: it reaches the sink as printable().
    void print(std::string_view line) const;
    void printDiagnostic(std::string_view line) const;

  private:
    Sink sink_;
    Detail detail_;
};

// The text, UTF-8, with every control character written as an escape sequence: it stays on its
// line and sends nothing to a terminal.
std::string printable(std::string_view text);

} // namespace lumo
