#include "support/Log.h"

#include <cstddef>
#include <utility>

namespace lumo {

namespace {

// The length in bytes of the control character that the text begins with; 0 for any other. The
// second range of control characters takes two bytes, from U+0080 to U+009F.
std::size_t controlLength(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(0) < 0x20 || byte(0) == 0x7f) {
        return 1;
    }
    return text.size() > 1 && byte(0) == 0xc2 && byte(1) >= 0x80 && byte(1) < 0xa0 ? 2 : 0;
}

} // namespace

Log::Log(Sink sink, Detail detail)
    : sink_(std::move(sink))
    , detail_(detail) {
}

void Log::print(std::string_view line) const {
    sink_(printable(line));
}

void Log::printDiagnostic(std::string_view line) const {
    if (detail_ == Detail::withDiagnostics) {
        print(line);
    }
}

std::string printable(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto length = controlLength(text);
        if (length == 0) {
            result.push_back(text.front());
            text.remove_prefix(1);
            continue;
        }
        const auto code = static_cast<unsigned char>(text[length - 1]);
        result.append("\\x").append({digits[code >> 4U], digits[code & 0xfU]});
        text.remove_prefix(length);
    }
    return result;
}

} // namespace lumo
