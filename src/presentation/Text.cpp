#include "presentation/Text.h"

#include "support/Utf8.h"

#include <locale>
#include <stdexcept>

namespace lumo {

namespace {

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
