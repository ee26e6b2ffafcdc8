#include "desktop/LesserServer.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace lumo::desktop {

namespace {

// From the X protocol's encoding, in bytes.
constexpr std::ptrdiff_t queryExtensionHead = 8;

constexpr int farFromServers = 5000;

// The socket of a display that lives in no folder and goes with its server.
struct DisplayAddress {
    explicit DisplayAddress(int number) {
        const std::string name = "/tmp/.X11-unix/X" + std::to_string(number);
        address.sun_family = AF_UNIX;
        std::ranges::copy(name, address.sun_path + 1);
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&address); }

    sockaddr_un address{};
    socklen_t size = 0;
};

} // namespace

LesserServer::LesserServer(const std::string &displayName,
                           std::vector<std::string> hiddenExtensions)
    : serverNumber_(std::stoi(displayName.substr(1)))
    , number_(serverNumber_ + farFromServers)
    , hidden_(std::move(hiddenExtensions))
    , listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    hidden_.emplace_back("MIT-SHM");
    const DisplayAddress address(number_);
    if (bind(listener_, address.get(), address.size) != 0 || listen(listener_, 8) != 0) {
        throw std::runtime_error("cannot listen as display " + std::to_string(number_));
    }
    acceptor_ = std::thread([this] { acceptAll(); });
}

LesserServer::~LesserServer() {
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (const int socket : sockets_) {
        shutdown(socket, SHUT_RDWR);
    }
    pumps_.clear();
    for (const int socket : sockets_) {
        close(socket);
    }
    close(listener_);
}

void LesserServer::acceptAll() {
    const DisplayAddress address(serverNumber_);
    for (int client = 0; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        connect(server, address.get(), address.size);
        sockets_.insert(sockets_.end(), {client, server});
        pumps_.emplace_back([=, this] { pump(client, server); });
        pumps_.emplace_back([=, this] { pump(server, client); });
    }
}

void LesserServer::pump(int from, int to) const {
    std::array<char, 65536> buffer{};
    for (ssize_t count = 0; (count = recv(from, buffer.data(), buffer.size(), 0)) > 0;) {
        hideExtensions(buffer.data(), buffer.data() + count);
        send(to, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL);
    }
    shutdown(to, SHUT_RDWR);
}

void LesserServer::hideExtensions(char *begin, char *end) const {
    for (const auto &name : hidden_) {
        char *at = begin;
        while ((at = std::search(at, end, name.begin(), name.end())) != end) {
            if (at - begin >= queryExtensionHead &&
                static_cast<std::uint8_t>(at[-queryExtensionHead]) == XCB_QUERY_EXTENSION) {
                std::fill_n(at, name.size(), '-');
            }
            ++at;
        }
    }
}

} // namespace lumo::desktop
