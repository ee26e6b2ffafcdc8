#pragma once

#include "desktop/ChildProcess.h"

#include <atomic>
#include <map>
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
    void run();
    void accept();
    void forward(int socket);
    void hideExtensions(char *begin, char *end) const;

    int serverNumber_;
    int number_;
    std::vector<std::string> hidden_;
    int listener_ = -1;
    std::map<int, int> peers_; // by each socket, where its bytes go
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace lumo::desktop
