#include "presentation/Text.h"

#include <cstddef>
#include <locale>
#include <stdexcept>

namespace lumo {

namespace {

// The next code point of UTF-8 text; a byte that begins none stands for itself.
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

// That of the user's settings, where the system knows it.
const std::locale &userLocale() {
    static const std::locale locale = [] {
        try {
            return std::locale("");
        } catch (const std::runtime_error &) {
            return std::locale::classic();
        }
    }();
    return locale;
}

} // namespace

std::wstring lowercased(std::string_view text) {
    std::wstring lower;
    while (!text.empty()) {
        lower.push_back(std::tolower(static_cast<wchar_t>(takeCodePoint(text)), userLocale()));
    }
    return lower;
}

bool comesBefore(const std::string &name, const std::string &other) {
    const auto left = lowercased(name);
    const auto right = lowercased(other);
    const auto &collation = std::use_facet<std::collate<wchar_t>>(userLocale());
    const int order = collation.compare(left.data(), left.data() + left.size(), right.data(),
                                        right.data() + right.size());
    return order != 0 ? order < 0 : name < other;
}

} // namespace lumo
