#include "desktop/LesserServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace lumo::desktop {

namespace {

// From the X protocol's encoding, in bytes.
constexpr std::size_t greetingHead = 12;
constexpr std::size_t requestHead = 4;
constexpr std::size_t longRequestHead = 8;
constexpr std::size_t queryExtensionHead = 8;

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

template <class Number>
Number read(const char *bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

bool writeAll(int socket, const char *bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = send(socket, bytes, count, MSG_NOSIGNAL);
        if (written <= 0) {
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

std::size_t padded(std::size_t length) {
    return (length + 3) / 4 * 4;
}

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
    for (const Client &client : clients_) {
        close(client.client);
        close(client.server);
    }
    close(listener_);
}

void LesserServer::run() {
    while (!stop_) {
        std::vector<pollfd> sources = {{listener_, POLLIN, 0}};
        for (const Client &client : clients_) {
            sources.push_back({client.client, POLLIN, 0});
            sources.push_back({client.server, POLLIN, 0});
        }
        constexpr int untilStopIsSeen = 20; // milliseconds
        poll(sources.data(), sources.size(), untilStopIsSeen);
        std::size_t index = 1;
        for (auto client = clients_.begin(); client != clients_.end(); index += 2) {
            const bool isReady = sources[index].revents != 0 || sources[index + 1].revents != 0;
            if (isReady && !forward(*client)) {
                close(client->client);
                close(client->server);
                client = clients_.erase(client);
            } else {
                ++client;
            }
        }
        if (sources[0].revents != 0) {
            const DisplayAddress address(serverNumber_);
            Client client{accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC),
                          ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0),
                          {},
                          false};
            if (connect(client.server, address.get(), address.size) == 0) {
                clients_.push_back(std::move(client));
            } else {
                close(client.client);
                close(client.server);
            }
        }
    }
}

// False when one side has gone.
bool LesserServer::forward(Client &client) {
    std::array<char, 65536> buffer{};
    const ssize_t asked = recv(client.client, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (asked > 0) {
        client.unsent.insert(client.unsent.end(), buffer.begin(), buffer.begin() + asked);
        forwardRequests(client);
    }
    const ssize_t told = recv(client.server, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (told > 0) {
        return writeAll(client.client, buffer.data(), static_cast<std::size_t>(told));
    }
    return asked != 0 && told != 0;
}

void LesserServer::forwardRequests(Client &client) {
    std::size_t done = 0;
    const auto &bytes = client.unsent;
    while (true) {
        const std::size_t left = bytes.size() - done;
        char *begin = client.unsent.data() + done;
        std::size_t length = 0;
        if (!client.isGreeted) {
            if (left < greetingHead) {
                break;
            }
            length = greetingHead + padded(read<std::uint16_t>(begin + 6)) +
                     padded(read<std::uint16_t>(begin + 8));
        } else if (left < requestHead) {
            break;
        } else {
            length = std::size_t{4} * read<std::uint16_t>(begin + 2);
            if (length == 0) {
                if (left < longRequestHead) {
                    break;
                }
                length = std::size_t{4} * read<std::uint32_t>(begin + 4);
            }
        }
        if (left < length) {
            break;
        }
        if (client.isGreeted) {
            hideExtension(begin, length);
        }
        client.isGreeted = true;
        done += length;
    }
    writeAll(client.server, bytes.data(), done);
    client.unsent.erase(client.unsent.begin(),
                        client.unsent.begin() + static_cast<std::ptrdiff_t>(done));
}

void LesserServer::hideExtension(char *request, std::size_t length) const {
    if (static_cast<std::uint8_t>(request[0]) != XCB_QUERY_EXTENSION ||
        length <= queryExtensionHead) {
        return;
    }
    char *name = request + queryExtensionHead;
    const std::size_t nameLength = read<std::uint16_t>(request + 4);
    if (std::ranges::find(hidden_, std::string_view(name, nameLength)) != hidden_.end()) {
        std::fill(name, name + nameLength, '-');
    }
}

} // namespace lumo::desktop
