#pragma once

#include "desktop/ChildProcess.h"

#include <atomic>
#include <list>
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
    struct Client {
        int client = -1;
        int server = -1;
        std::vector<char> unsent; // from the client, an incomplete request at the end
        bool isGreeted = false;
    };

    void run();
    bool forward(Client &client);
    void forwardRequests(Client &client);
    void hideExtension(char *request, std::size_t length) const;

    int serverNumber_;
    int number_;
    std::vector<std::string> hidden_;
    int listener_ = -1;
    std::list<Client> clients_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace lumo::desktop
