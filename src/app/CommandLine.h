#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

// What the program says, in one line without its end, instead of starting, and its exit status: 0
// when it was asked for that, 2 when it was asked for what it does not know.
struct CommandLineAnswer {
    std::string line;
    int status = 0;
};

// Absent without arguments, not counting the program's own name: then it starts.
std::optional<CommandLineAnswer> answerToArguments(const std::vector<std::string_view> &arguments);

} // namespace lumo
