#include "platform/x11/server/PropertyReply.h"

#include <glib.h>

#include <memory>

namespace lumo::x11 {

std::span<const std::uint32_t> values32(const xcb_get_property_reply_t *reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    return {static_cast<const std::uint32_t *>(xcb_get_property_value(reply)),
            static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4};
}

std::optional<std::uint32_t> value32(const xcb_get_property_reply_t *reply) {
    const auto values = values32(reply);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

std::string_view bytes(const xcb_get_property_reply_t *reply) {
    if (reply == nullptr || reply->format != 8) {
        return {};
    }
    return {static_cast<const char *>(xcb_get_property_value(reply)),
            static_cast<std::size_t>(xcb_get_property_value_length(reply))};
}

std::optional<std::string> text(const xcb_get_property_reply_t *reply, xcb_atom_t utf8String) {
    auto raw = bytes(reply);
    raw = raw.substr(0, raw.find('\0'));
    if (raw.empty()) {
        return std::nullopt;
    }
    return utf8(raw, reply->type == utf8String);
}

std::string utf8(std::string_view raw, bool shouldBeUtf8) {
    const auto length = static_cast<gssize>(raw.size());
    if (g_utf8_validate(raw.data(), length, nullptr) != FALSE) {
        return std::string(raw);
    }
    const std::unique_ptr<gchar, decltype(&g_free)> converted(
        shouldBeUtf8
            ? g_utf8_make_valid(raw.data(), length)
            : g_convert(raw.data(), length, "UTF-8", "ISO-8859-1", nullptr, nullptr, nullptr),
        g_free);
    return converted ? converted.get() : "";
}

} // namespace lumo::x11
