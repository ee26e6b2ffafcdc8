#include "app/CommandLine.h"

#include <algorithm>

namespace lumo {

std::variant<StartedBy, CommandLineAnswer>
readCommandLine(const std::vector<std::string_view> &arguments) {
    if (arguments.empty()) {
        return StartedBy::user;
    }
    if (arguments.size() == 1 && arguments.front() == "--from-desktop") {
        return StartedBy::desktop;
    }
    if (arguments.size() == 1 && arguments.front() == "--gapplication-service") {
        return StartedBy::request;
    }
    const bool isKnown = std::ranges::all_of(arguments, [](std::string_view argument) {
        return argument == "--help" || argument == "--version";
    });
    constexpr int misused = 2;
    return CommandLineAnswer{"Lumo " LUMO_VERSION
                             " has no options and is set up in its own windows: see lumo(1).",
                             isKnown ? 0 : misused};
}

} // namespace lumo
