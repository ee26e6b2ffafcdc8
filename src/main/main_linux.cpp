#include "RunOnWayland.h"
#include "RunOnX11.h"
#include "app/CommandLine.h"
#include "platform/Platform.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/posix/LineOutput.h"
#include "support/Log.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <variant>

int main(int argumentCount, char **arguments) {
    const auto start =
        lumo::readCommandLine({arguments + std::min(argumentCount, 1), arguments + argumentCount});
    if (const auto *answer = std::get_if<lumo::CommandLineAnswer>(&start)) {
        (answer->status == 0 ? std::cout : std::cerr) << answer->line << std::endl;
        return answer->status;
    }
    const auto startedBy = std::get<lumo::StartedBy>(start);
    // The toolkit would have the session manager start the program anew at the next login, which
    // the user decides by the login item alone; nor does it heed when that asks it to end.
    unsetenv("SESSION_MANAGER");   // NOLINT(concurrency-mt-unsafe): before there are other threads
    std::signal(SIGPIPE, SIG_IGN); // what reads the log may end first
    auto log = lumo::posix::standardOutputLog(startedBy == lumo::StartedBy::user
                                                  ? lumo::Log::Detail::withDiagnostics
                                                  : lumo::Log::Detail::withoutDiagnostics);
    lumo::freedesktop::GlibMainLoop loop;
    if (const auto status = lumo::runOnWayland(loop, log, startedBy)) {
        return *status;
    }
    return lumo::runOnX11(loop, log, startedBy);
}
