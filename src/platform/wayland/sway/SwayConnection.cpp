#include "platform/wayland/sway/SwayConnection.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/PeerProcess.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace lumo::wayland::sway {

namespace {

using freedesktop::FileDescriptor;
using nlohmann::json;

constexpr int longestAnswer = 2000; // milliseconds, at the start

constexpr std::string_view subscription = R"(["window","workspace","binding","mode"])";

std::vector<std::string> socketPaths(std::int32_t process) {
    std::vector<std::string> paths;
    // NOLINTBEGIN(concurrency-mt-unsafe): nothing changes the environment while threads run
    if (const char *named = std::getenv("SWAYSOCK")) {
        paths.emplace_back(named);
    }
    if (const char *folder = std::getenv("XDG_RUNTIME_DIR")) {
        paths.push_back(std::string(folder) + "/sway-ipc." + std::to_string(getuid()) + '.' +
                        std::to_string(process) + ".sock");
    }
    // NOLINTEND(concurrency-mt-unsafe)
    return paths;
}

// A connection to the socket at the path if that process listens there; else none. Another sway's
// may be named by variables that are left over from another session.
FileDescriptor connectTo(const std::string &path, std::int32_t process) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {};
    }
    path.copy(static_cast<char *>(address.sun_path), path.size());
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket ||
        connect(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        freedesktop::peerProcess(socket.get()) != process) {
        return {};
    }
    return socket;
}

} // namespace

std::unique_ptr<SwayConnection> SwayConnection::open(std::int32_t process) {
    for (const auto &path : socketPaths(process)) {
        if (auto socket = connectTo(path, process)) {
            std::unique_ptr<SwayConnection> connection(
                new SwayConnection(std::move(socket), process));
            const auto answer = connection->ask(MessageType::subscribe, subscription);
            const auto version =
                json::parse(connection->ask(MessageType::getVersion).value_or(""), nullptr, false);
            if (!answer || answer->find("true") == std::string::npos || !version.is_object()) {
                return nullptr;
            }
            connection->configurationFolder_ =
                std::filesystem::path(version.value("loaded_config_file_name", std::string()))
                    .parent_path();
            return connection;
        }
    }
    return nullptr;
}

SwayConnection::SwayConnection(FileDescriptor socket, std::int32_t process)
    : socket_(std::move(socket))
    , process_(process) {
}

SwayConnection::~SwayConnection() {
    awaitReplies();
}

void SwayConnection::awaitReplies() {
    pollfd readable = {socket_.get(), POLLIN, 0};
    while (!replies_.empty() && poll(&readable, 1, longestAnswer) > 0 && receive() && dispatch()) {
    }
}

void SwayConnection::request(MessageType type, std::string_view body, Reply reply) {
    unsent_ += encoded(type, body);
    replies_.push_back(std::move(reply));
    send();
}

void SwayConnection::run(std::string_view command) {
    request(MessageType::runCommand, command, [](const std::string &) {});
}

std::optional<std::string> SwayConnection::ask(MessageType type, std::string_view body) {
    // A reply that is too late must find something to write to.
    const auto answer = std::make_shared<std::optional<std::string>>();
    request(type, body, [answer](const std::string &reply) { *answer = reply; });
    awaitReplies();
    return *answer;
}

Handle SwayConnection::onEvent(std::function<void(const Message &event)> observer) {
    return events_.subscribe(std::move(observer));
}

Handle SwayConnection::listen(freedesktop::GlibMainLoop &mainLoop, std::function<void()> lost) {
    return mainLoop.watch(socket_.get(), {.prepare =
                                              [this] {
                                                  send();
                                                  return false;
                                              },
                                          .dispatch =
                                              [this, lost = std::move(lost)] {
                                                  const bool isAlive = receive() && dispatch();
                                                  if (!isAlive) {
                                                      lost();
                                                  }
                                                  return isAlive;
                                              }});
}

void SwayConnection::send() {
    while (!unsent_.empty()) {
        const auto sent =
            ::send(socket_.get(), unsent_.data(), unsent_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent <= 0) {
            return; // a loss is noticed by reading
        }
        unsent_.erase(0, static_cast<std::size_t>(sent));
    }
}

bool SwayConnection::receive() {
    std::array<char, 65536> bytes{};
    for (;;) {
        const auto count = recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count <= 0) {
            return count < 0 && (errno == EAGAIN || errno == EINTR);
        }
        reader_.add({bytes.data(), static_cast<std::size_t>(count)});
    }
}

bool SwayConnection::dispatch() {
    while (const auto message = reader_.next()) {
        if (isEvent(message->type)) {
            events_.emit(*message);
        } else if (!replies_.empty()) {
            const auto reply = std::move(replies_.front());
            replies_.pop_front();
            reply(message->body);
        }
    }
    return !reader_.isBroken();
}

} // namespace lumo::wayland::sway
