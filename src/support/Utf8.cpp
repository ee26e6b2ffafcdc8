#include "support/Utf8.h"

#include <cstddef>

namespace lumo {

char32_t takeCodePoint(std::string_view &text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (length > text.size()) {
        text.remove_prefix(1);
        return first;
    }
    char32_t point = length == 1 ? first : first & (0x7fU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        point = point << 6U | (static_cast<unsigned char>(text[index]) & 0x3fU);
    }
    text.remove_prefix(length);
    return point;
}

} // namespace lumo
