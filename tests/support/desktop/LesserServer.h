#pragma once

#include "desktop/ChildProcess.h"

#include <string>
#include <thread>
#include <vector>

namespace lumo::desktop {

// The X server as one that lacks extensions which no option takes away from it: stands between
// programs and the server, and asks for an extension that does not exist in place of a hidden one.
// Works for programs of this machine's byte order. MIT-SHM, whose files it doesn't pass on, is
// hidden as well.
class LesserServer {
  public:
    // Listens on a display number of its own; throws when it can't.
    LesserServer(const std::string &displayName, std::vector<std::string> hiddenExtensions);
    ~LesserServer();
    LesserServer(const LesserServer &) = delete;
    LesserServer &operator=(const LesserServer &) = delete;

    // For programs that are to meet it.
    Environment variables() const { return {{"DISPLAY", ":" + std::to_string(number_)}}; }

  private:
    void acceptAll();
    void pump(int from, int to) const;
    void hideExtensions(char *begin, char *end) const;

    int serverNumber_;
    int number_;
    std::vector<std::string> hidden_;
    int listener_ = -1;
    std::thread acceptor_;
    std::vector<int> sockets_;        // after the acceptor has ended, or by it
    std::vector<std::jthread> pumps_; // the same
};

} // namespace lumo::desktop
