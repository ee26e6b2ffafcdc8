#pragma once

#include "platform/Application.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lumo {

// What the program says, in one line without its end, instead of starting, and its exit status: 0
// when it was asked for that, 2 when it was asked for what it does not know.
struct CommandLineAnswer {
    std::string line;
    int status = 0;
};

// Takes the arguments without the program's own name. The program starts without any, and with the
// one by which its desktop entry or its service file tells what has started it.
std::variant<StartedBy, CommandLineAnswer>
readCommandLine(const std::vector<std::string_view> &arguments);

} // namespace lumo
