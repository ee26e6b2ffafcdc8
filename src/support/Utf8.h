#pragma once

#include <string_view>

namespace lumo {

// Removes the first code point of a UTF-8 text, which must not be empty, and returns it. A byte
// that begins none stands for itself.
char32_t takeCodePoint(std::string_view &text);

} // namespace lumo
