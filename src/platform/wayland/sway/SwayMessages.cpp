#include "platform/wayland/sway/SwayMessages.h"

#include <cstring>

namespace lumo::wayland::sway {

namespace {

constexpr std::string_view magic = "i3-ipc";
constexpr std::size_t headSize = magic.size() + 2 * sizeof(std::uint32_t);
constexpr std::uint32_t longestBody = 1U << 28U; // beyond any tree

std::string inHostOrder(std::uint32_t number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

std::uint32_t numberAt(const std::string &bytes, std::size_t offset) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

} // namespace

std::string encoded(MessageType type, std::string_view body) {
    std::string bytes(magic);
    bytes += inHostOrder(static_cast<std::uint32_t>(body.size()));
    bytes += inHostOrder(static_cast<std::uint32_t>(type));
    bytes += body;
    return bytes;
}

std::optional<Message> MessageReader::next() {
    if (isBroken_ || bytes_.size() < headSize) {
        return std::nullopt;
    }
    const std::size_t size = numberAt(bytes_, magic.size());
    isBroken_ = bytes_.compare(0, magic.size(), magic) != 0 || size > longestBody;
    if (isBroken_ || bytes_.size() < headSize + size) {
        return std::nullopt;
    }
    Message message{
        static_cast<MessageType>(numberAt(bytes_, magic.size() + sizeof(std::uint32_t))),
        bytes_.substr(headSize, size)};
    bytes_.erase(0, headSize + size);
    return message;
}

} // namespace lumo::wayland::sway
