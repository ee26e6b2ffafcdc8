#include "desktop/LesserServer.h"

#include <poll.h>
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
    thread_ = std::thread([this] { run(); });
}

LesserServer::~LesserServer() {
    stop_ = true;
    thread_.join();
    for (const auto &[socket, peer] : peers_) {
        close(socket);
    }
    close(listener_);
}

void LesserServer::run() {
    while (!stop_) {
        std::vector<pollfd> sources = {{listener_, POLLIN, 0}};
        for (const auto &[socket, peer] : peers_) {
            sources.push_back({socket, POLLIN, 0});
        }
        constexpr int untilStopIsSeen = 20; // milliseconds
        poll(sources.data(), sources.size(), untilStopIsSeen);
        for (const pollfd &source : sources) {
            if (source.revents == 0) {
                continue;
            }
            source.fd == listener_ ? accept() : forward(source.fd);
        }
    }
}

void LesserServer::accept() {
    const DisplayAddress address(serverNumber_);
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(server, address.get(), address.size) == 0) {
        peers_.insert({{client, server}, {server, client}});
    } else {
        close(client);
        close(server);
    }
}

void LesserServer::forward(int socket) {
    const auto found = peers_.find(socket);
    if (found == peers_.end()) { // its peer has gone in the same turn
        return;
    }
    const int peer = found->second;
    std::array<char, 65536> buffer{};
    const ssize_t count = recv(socket, buffer.data(), buffer.size(), 0);
    hideExtensions(buffer.data(), buffer.data() + std::max<ssize_t>(count, 0));
    if (count <= 0 ||
        send(peer, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) != count) {
        for (const int gone : {socket, peer}) {
            close(gone);
            peers_.erase(gone);
        }
    }
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
