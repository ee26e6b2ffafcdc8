#pragma once

#include "platform/freedesktop/FileDescriptor.h"
#include "platform/wayland/sway/SwayMessages.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland::sway {

// A connection to the socket on which sway tells about itself and takes commands. Main thread only.
class SwayConnection {
  public:
    using Reply = std::function<void(const std::string &body)>;

    // Connects to the sway that runs as that process, and subscribes to its events: at the socket
    // that SWAYSOCK names, or where it is by default. Waits for it. Null when that process is no
    // sway, or none that answers.
    static std::unique_ptr<SwayConnection> open(std::int32_t process);

    // Waits for the replies to what was requested: sway drops what it has not read of a connection
    // that ends with unread ones.
    ~SwayConnection();
    SwayConnection(const SwayConnection &) = delete;
    SwayConnection &operator=(const SwayConnection &) = delete;

    // Of sway.
    std::int32_t process() const { return process_; }

    // Where the user's configuration lies; empty when sway does not say.
    const std::filesystem::path &configurationFolder() const { return configurationFolder_; }

    // Calls the function with the reply, in the order of the requests, from the main loop. Not at
    // all once the connection is lost.
    void request(MessageType type, std::string_view body, Reply reply);

    // As a command of the user's; what it comes to is not looked at.
    void run(std::string_view command);

    // Waits for the reply; absent when there is none in time. For start-up only, before anything
    // was requested.
    std::optional<std::string> ask(MessageType type, std::string_view body = {});

    Handle onEvent(std::function<void(const Message &event)> observer);

    // Reads and dispatches in the main loop from now on. Calls the function once when sway is gone.
    Handle listen(freedesktop::GlibMainLoop &mainLoop, std::function<void()> lost);

  private:
    SwayConnection(freedesktop::FileDescriptor socket, std::int32_t process);

    void send();
    bool receive();
    bool dispatch();
    void awaitReplies();

    freedesktop::FileDescriptor socket_;
    std::int32_t process_;
    std::filesystem::path configurationFolder_;
    std::string unsent_;
    MessageReader reader_;
    std::deque<Reply> replies_; // that are still to come, by their order
    Signal<Message> events_;
};

} // namespace lumo::wayland::sway
