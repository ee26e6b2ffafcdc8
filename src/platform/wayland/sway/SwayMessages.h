#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumo::wayland::sway {

// What a message on sway's socket is about; the numbers are those of sway-ipc(7).
enum class MessageType : std::uint32_t {
    runCommand = 0,
    subscribe = 2,
    getTree = 4,
    getVersion = 7,
    getConfig = 9,
    getBindingState = 12,
    workspaceEvent = 0x80000000,
    modeEvent = 0x80000002,
    windowEvent = 0x80000003,
    bindingEvent = 0x80000005,
};

constexpr bool isEvent(MessageType type) {
    return (static_cast<std::uint32_t>(type) & 0x80000000U) != 0;
}

struct Message {
    MessageType type = MessageType::runCommand;
    std::string body;
};

// The bytes of a message.
std::string encoded(MessageType type, std::string_view body);

// Takes messages out of the bytes as they arrive.
class MessageReader {
  public:
    void add(std::string_view bytes) { bytes_.append(bytes); }

    // The next message; absent while it has not arrived as a whole, and for good once what arrives
    // is no message, see isBroken().
    std::optional<Message> next();

    bool isBroken() const { return isBroken_; }

  private:
    std::string bytes_;
    bool isBroken_ = false;
};

} // namespace lumo::wayland::sway
