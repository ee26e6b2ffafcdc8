#pragma once

#include "desktop/ChildProcess.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumo::desktop {

// What a server is to be like.
struct ServerLacks {
    std::vector<std::string> extensions;                        // not there
    std::map<std::string, std::array<std::uint32_t, 2>> oldest; // of at most that version
};

// The X server as one that lacks things which no option takes away from it: stands between programs
// and the server, asks for an extension that is not there in place of a hidden one, and for an old
// version in place of a new one. Works for programs of this machine's byte order. MIT-SHM, whose
// files it doesn't pass on, is never there.
class LesserServer {
  public:
    // Listens on a display number of its own. The extensions of the second kind must be there, and
    // of those that ask for their version by two 32-bit numbers. Throws when it can't listen.
    LesserServer(const std::string &displayName, ServerLacks lacks);
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
    void lessen(char *request, std::size_t length);

    int serverNumber_;
    int number_;
    ServerLacks lacks_;
    std::map<std::uint8_t, std::array<std::uint32_t, 2>> versions_; // by major operation code
    int listener_ = -1;
    std::list<Client> clients_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

} // namespace lumo::desktop
