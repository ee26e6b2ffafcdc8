#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace lumo::x11 {

// Readers of a property reply. A null reply and one of another format are taken as no property.

// The 32-bit values; empty when there are none. They live as long as the reply.
std::span<const std::uint32_t> values32(const xcb_get_property_reply_t *reply);

// The first 32-bit value.
std::optional<std::uint32_t> value32(const xcb_get_property_reply_t *reply);

// The bytes; empty when there are none. They live as long as the reply.
std::string_view bytes(const xcb_get_property_reply_t *reply);

// The text up to the first zero byte in UTF-8; absent when there is none.
std::optional<std::string> text(const xcb_get_property_reply_t *reply, xcb_atom_t utf8String);

// The same text in UTF-8 for certain. What is not valid UTF-8 is repaired when it should have been,
// and else read as Latin-1.
std::string utf8(std::string_view raw, bool shouldBeUtf8);

} // namespace lumo::x11
